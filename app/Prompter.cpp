#include "app/Prompter.h"

#include "app/PasswordDialog.h"
#include "app/WritePreviewDialog.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>

Prompter::~Prompter() = default;

bool Prompter::question(QWidget *parent, const QString &title, const QString &text) {
    return QMessageBox::question(parent, title, text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No) ==
           QMessageBox::Yes;
}

bool Prompter::writePreview(QWidget *parent, const QString &title, const QString &question,
                            kd::WritePreview *preview) {
    WritePreviewDialog dialog(title, question, *preview, parent);
    const bool write = dialog.exec() == QDialog::Accepted;
    preview->keepDeviceValues = dialog.keepDeviceValues();
    return write;
}

Prompter::Answer Prompter::questionWithCancel(QWidget *parent, const QString &title, const QString &text) {
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, parent);
    QPushButton *yes = box.addButton(QStringLiteral("Да"), QMessageBox::YesRole);
    QPushButton *no = box.addButton(QStringLiteral("Нет"), QMessageBox::NoRole);
    QPushButton *cancel = box.addButton(QStringLiteral("Отмена"), QMessageBox::RejectRole);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == yes)
        return Answer::Yes;
    return box.clickedButton() == no ? Answer::No : Answer::Cancel;
}

void Prompter::information(QWidget *parent, const QString &title, const QString &text) {
    QMessageBox::information(parent, title, text);
}

void Prompter::warning(QWidget *parent, const QString &title, const QString &text) {
    QMessageBox::warning(parent, title, text);
}

void Prompter::critical(QWidget *parent, const QString &title, const QString &text) {
    QMessageBox::critical(parent, title, text);
}

QString Prompter::openFileName(QWidget *parent, const QString &title, const QString &dir,
                               const QString &filter) {
    return QFileDialog::getOpenFileName(parent, title, dir, filter);
}

QString Prompter::saveFileName(QWidget *parent, const QString &title, const QString &dir,
                               const QString &filter) {
    return QFileDialog::getSaveFileName(parent, title, dir, filter);
}

bool Prompter::text(QWidget *parent, const QString &title, const QString &label, QString *value) {
    bool ok = false;
    const QString answer = QInputDialog::getText(parent, title, label, QLineEdit::Normal, *value, &ok);
    if (ok)
        *value = answer;
    return ok;
}

bool Prompter::password(QWidget *parent, quint32 *password) {
    PasswordDialog dialog(parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    *password = quint32(dialog.password());
    return true;
}
