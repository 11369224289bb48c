// Which sanitizer a test is built with.
#pragma once

// g++ has a macro for it, clang a feature.
#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace ormel::test {

#if defined(__SANITIZE_THREAD__) || __has_feature(thread_sanitizer)
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif

} // namespace ormel::test
