#pragma once

#include "protocol/JobResult.h"

#include <QString>
#include <QStringList>

// The one box after a read or write job that did not come through, naming the sections it missed
// ("Не удалось считать: навигация, серверы"), for a write apart those sent but not answered ("Записано без
// подтверждения: датчики топлива"); empty when there is nothing to say (the job succeeded,
// or was blocked, cancelled or stopped at the password, which have their own messages).
QString jobReportText(const JobResult &result);

// The read-back of a write the device confirmed whole, when it missed sections: the write's own outcome
// first, then what the check could not read; empty when it read everything.
QString readBackReportText(const JobResult &readBack);

// The sections a write leaves out because they hold no device values (never read, loaded or created).
QString notWrittenText(const QStringList &names);
