#include "log/late.h"

namespace {

void (*lastPrint)(const std::string &) = nullptr;
const char *lastText = nullptr;

__attribute__((destructor)) void atUnload() {
    if (lastPrint != nullptr)
        lastPrint(lastText);
}

} // namespace

void printWhenUnloaded(void (*print)(const std::string &), const char *text) {
    lastPrint = print;
    lastText = text;
}
