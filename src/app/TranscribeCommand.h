#pragma once

// `quorla transcribe FILE [options]`: sends an audio file through the same steps as a
// dictation (dictionary prompt, transcription, polish, translation) and prints the
// text on standard output. Needs no display; returns the process exit status.
int runTranscribeCommand(int argc, char **argv);
