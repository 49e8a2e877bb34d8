#pragma once

#include <QString>

// `quorla dictation start|stop|toggle|cancel|status`: asks the running Quorla to start,
// end or drop a dictation, or prints its state, and exits at once. Returns the exit
// status: 0 done, 1 no Quorla answered or it refused, 2 the command line was wrong.
int runDictationCommand(int argc, char **argv);

// The lines `quorla --help` shows for these commands.
QString dictationCommandSummary();
