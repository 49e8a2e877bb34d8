#pragma once

// SIGTERM, SIGINT and SIGHUP (logout, `pkill quorla`, Ctrl+C) quit the application the
// way its Quit does, so everything it changed in the desktop is undone on the way out. A
// second such signal ends the process at once.
void quitOnTerminationSignals();
