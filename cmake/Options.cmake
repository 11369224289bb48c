# How everything is compiled.

set(ORMEL_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, address,undefined or thread")
option(ORMEL_COVERAGE "Count which lines and branches of src/ are run" OFF)
option(ORMEL_FUZZ "Build what tests/fuzz holds as fuzzers; for clang" OFF)
option(ORMEL_BENCH "Build the benchmarks" OFF)

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# The build tree has the layout of an installation, so that libraries, engines and the tool find each other in both.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# _DEFAULT_SOURCE: the POSIX calls, which -std=c++20 alone would leave out for C files.
add_library(ormel_options INTERFACE)
target_compile_definitions(ormel_options INTERFACE _DEFAULT_SOURCE)
# g++ 12 sees overlapping copies inside std::string where there are none (GCC bug 105651).
target_compile_options(ormel_options INTERFACE
  -Wall -Wextra -Wconversion -Werror $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> -fno-omit-frame-pointer)
target_include_directories(ormel_options INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include)

if(ORMEL_SANITIZE)
  # Of the folder, not of ormel_options, so that tests/ can take some of it back.
  add_compile_options(-fsanitize=${ORMEL_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORMEL_SANITIZE})
endif()
if(ORMEL_FUZZ)
  target_compile_options(ormel_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(ORMEL_COVERAGE)
  target_link_options(ormel_options INTERFACE --coverage) # what is counted is the library: see src/CMakeLists.txt
endif()
