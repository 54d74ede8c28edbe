#pragma once

class QTextStream;
class VantorConfiguration;
struct CliOptions;

namespace kd {
struct ConfigurationDiff;
}

// The commands about configurations that need no device: `diff` of two files or snapshots and
// `history IMEI`. Exit status: diff 0 equal, 1 different, 2 an input that does not load.
int diffCommand(const CliOptions &options, QTextStream &out, QTextStream &err);
int historyCommand(const CliOptions &options, QTextStream &out, QTextStream &err);

// `section.field: old -> new`, one line per change.
void printChanges(const kd::ConfigurationDiff &diff, QTextStream &stream);
