// A library of its own, which ends after the program has.
#pragma once

#include <string>

// Has print called with the text when the library is unloaded.
__attribute__((visibility("default"))) void printWhenUnloaded(void (*print)(const std::string &), const char *text);
