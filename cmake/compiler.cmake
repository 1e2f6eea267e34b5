# Compiler settings that every target shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()
# tools/compiler_matrix.py builds with other values of these two.
set(KOR_OPTIMISATION -O2 CACHE STRING "Optimisation of a release build")
set(KOR_CONTRACTION off CACHE STRING "-ffp-contract of everything but the kernels")
set(CMAKE_CXX_FLAGS_RELEASE ${KOR_OPTIMISATION})

find_program(KOR_CCACHE ccache)
if(KOR_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KOR_CCACHE})
endif()

add_library(kor_compiler INTERFACE)
# No contraction of a * b + c: the same bits on every machine.
target_compile_options(kor_compiler INTERFACE -Wall -Wextra -Wconversion -Wshadow -ffp-contract=${KOR_CONTRACTION})
# Another compiler may warn of what this one takes: that is for those who work on kor, not for those who use it.
if(KOR_WARNINGS_AS_ERRORS AND (KOR_BUILD_TESTS OR KOR_BUILD_FUZZERS OR KOR_BUILD_BENCHMARKS))
  target_compile_options(kor_compiler INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # In C++, GCC's -Wconversion leaves changes of sign alone; clang's does not.
  target_compile_options(kor_compiler INTERFACE -Wno-sign-conversion)
endif()
if(WIN32)
  # One file, and the stack that Linux programs have.
  target_link_options(kor_compiler INTERFACE -static -Wl,--stack,8388608)
else()
  if(NOT KOR_SANITIZE)
    target_link_options(kor_compiler INTERFACE -static-libgcc -static-libstdc++)
  endif()
endif()
if(KOR_SANITIZE)
  # Undefined behaviour is watched for in the library (see CMakeLists.txt).
  target_compile_options(kor_compiler INTERFACE -fsanitize=address -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  target_compile_definitions(kor_compiler INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(kor_compiler INTERFACE -fsanitize=address,undefined)
endif()
if(KOR_BUILD_FUZZERS)
  target_compile_options(kor_compiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
