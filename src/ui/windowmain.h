// The modes that draw (the window, --flipdemo, --screenshots, --bench) behind one entry point,
// so the executable can open them as a module and the terminal never maps Qt Gui or Widgets.
#pragma once

#define TOCK_WINDOW_ENTRY "tockWindowMain"

extern "C" {
// Parses the command line like main() and runs its drawing mode; returns the exit status.
__attribute__((visibility("default"))) int tockWindowMain(int argc, char **argv);
using TockWindowMain = int (*)(int argc, char **argv);
}
