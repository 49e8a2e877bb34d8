#pragma once

// Starts the program image once more with glibc's per-thread cache of freed blocks
// switched off, before anything else runs. When the window closes, that cache keeps
// the last blocks of each size its scene freed, spread over the whole heap, and their
// pages stay resident however the heap is trimmed: about 1 MB that Quorla, living in
// the tray, would hold for nothing. Returns when the cache is already off, on other C
// libraries, or when the restart fails (Quorla then runs as it is). The programs Quorla
// starts get the environment it was given.
void restartWithoutFreedBlockCache(char *argv[]);
