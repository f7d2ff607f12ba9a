#pragma once

namespace vesk_tool {

// Exit codes: 0 done, 1 the data said no (a file that does not read, an entry that is not
// there), 2 the command line was wrong.
constexpr int kFailure = 1;
constexpr int kUsageError = 2;

// vesk config <subcommand> ...: argv holds what follows "config".
int RunConfig(int argc, char** argv);
// vesk gds <subcommand> ...: argv holds what follows "gds".
int RunGds(int argc, char** argv);

} // namespace vesk_tool
