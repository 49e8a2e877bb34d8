#pragma once

// The main window's own process (quorla --window-link FD): mirrors the model of the
// Quorla that started it over the socket FD, shows the window, and ends when the
// window closes or that Quorla goes away.
int runWindowApplication(int argc, char *argv[], int linkDescriptor);
