#pragma once

// `quorla doctor [--json]`: checks what dictation needs and prints one line per check.
// Exit status 0 when dictation can work, 1 when something must be fixed first.
// Needs no display.
int runDoctorCommand(int argc, char **argv);
