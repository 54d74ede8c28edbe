#pragma once

class QCoreApplication;

// Russian texts for Qt's own buttons and dialogs (Yes/No, Cancel, the file dialogs), from the Qt
// translations installed with the libraries. False when none are found: the buttons stay in English.
bool installQtTranslations(QCoreApplication &app);
