#pragma once

#include <optional>

// How the dictating process was asked to start.
struct LaunchOptions {
    // Tray and trigger only: no window until the user opens one (login autostart).
    bool background = false;
};

// Reads the command line of a plain launch. Answers --help and --version, and reports
// a wrong argument, on the terminal; then returns the exit status to end with.
std::optional<int> answeredCommandLine(int &argc, char **argv, LaunchOptions *options);
