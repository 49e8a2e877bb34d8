#include "app/WindowApplication.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// Started by quorla with the socket of its link: quorla-window --window-link FD.
int main(int argc, char *argv[])
{
    if (argc < 3 || std::strcmp(argv[1], "--window-link") != 0) {
        std::fprintf(stderr, "quorla-window is started by quorla; run quorla instead.\n");
        return 2;
    }
    return runWindowApplication(argc, argv, std::atoi(argv[2]));
}
