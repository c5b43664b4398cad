// The screen behind "Mouse": the pointer type and its device file.
#pragma once

// Lets the user choose a pointer type, which becomes currentPointer, and its device file, where the
// type needs one. Going back to the previous menu changes nothing.
void selectPointerDevice();
