// Shows the password that libdecrypt found when it was loaded, in angle brackets, and whether the bytes around it are
// clear.
#include "ormeldb/platform/decrypt.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

int main() {
    const unsigned char *begin = g_decrypt_info_s;
    const unsigned char *end = std::end(g_decrypt_info_s);
    const unsigned char *password = begin + ORMEL_DECRYPT_PASSWORD_OFFSET;
    const char *text = reinterpret_cast<const char *>(password);
    const auto isClear = [](unsigned char byte) { return byte == 0; };
    const bool clear = std::all_of(begin, password, isClear) && std::all_of(password + std::strlen(text), end, isClear);
    std::printf("<%s>%s\n", text, clear ? "" : " and other bytes");
    return 0;
}
