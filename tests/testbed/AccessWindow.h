// The window in the test bed's guest, offscreen, as far as its start goes: every line it prints
// starts with "WINDOW ". Each message box it shows gives "BOX " and the text, one line per line
// of it (the box is answered with OK); then "ENDED" when the program ends at once, or "DRIVES"
// with the number of drives and "DRIVE " with each entry once the drive list is filled.
#pragma once

namespace plattmix::testbed {

// Answers the process's exit status: 0 when the window came up, 1 when the program ended.
int StartTheWindow(int argc, char** argv);

}  // namespace plattmix::testbed
