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

struct ConfigurationSource;

// What `write` and `restore` send, loaded and checked before any device is touched: a file that does
// not load, or a configuration file that holds none of the configuration's values, or (unless --force)
// one with values the reader would change on the way, is refused with its reasons on stderr. Returns the
// exit status of a refusal (2), or -1 when the write may go ahead.
int loadWriteSource(const CliOptions &options, ConfigurationSource *source, QTextStream &err);

// `section.field: old -> new`, one line per change.
void printChanges(const kd::ConfigurationDiff &diff, QTextStream &stream);
