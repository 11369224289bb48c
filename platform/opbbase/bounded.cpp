#include "ormeldb/platform/opbbase.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

int strcpy_s(char *dst, size_t dstMax, const char *src) {
    return strncpy_s(dst, dstMax, src, SIZE_MAX);
}

int strncpy_s(char *dst, size_t dstMax, const char *src, size_t count) {
    if (dst == nullptr || dstMax == 0)
        return EINVAL;
    if (src == nullptr) {
        *dst = '\0';
        return EINVAL;
    }
    const size_t length = strnlen(src, std::min(count, dstMax));
    if (length == dstMax) {
        *dst = '\0';
        return ERANGE;
    }
    std::memmove(dst, src, length);
    dst[length] = '\0';
    return 0;
}

int memcpy_s(void *dst, size_t dstMax, const void *src, size_t count) {
    if (count == 0)
        return 0;
    if (dst == nullptr || src == nullptr)
        return EINVAL;
    if (count > dstMax)
        return ERANGE;
    std::memmove(dst, src, count);
    return 0;
}

int memset_s(void *dst, size_t dstMax, int c, size_t count) {
    if (count == 0)
        return 0;
    if (dst == nullptr)
        return EINVAL;
    if (count > dstMax)
        return ERANGE;
    std::memset(dst, c, count);
    return 0;
}

int sprintf_s(char *dst, size_t dstMax, const char *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int length = vsnprintf_s(dst, dstMax, SIZE_MAX, fmt, args);
    va_end(args);
    if (length < 0 && dst != nullptr && dstMax > 0)
        *dst = '\0';
    return length;
}

int snprintf_s(char *dst, size_t dstMax, size_t count, const char *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int length = vsnprintf_s(dst, dstMax, count, fmt, args);
    va_end(args);
    return length;
}

int vsnprintf_s(char *dst, size_t dstMax, size_t count, const char *fmt, va_list args) {
    const size_t room = count < dstMax ? count + 1 : dstMax;
    if (dst == nullptr || room == 0)
        return -1;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): every caller has started its list
    const int length = fmt != nullptr ? std::vsnprintf(dst, room, fmt, args) : -1;
    if (length < 0)
        *dst = '\0';
    return length >= 0 && static_cast<size_t>(length) < room ? length : -1;
}
