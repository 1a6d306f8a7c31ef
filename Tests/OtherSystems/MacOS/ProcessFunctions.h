// Functions of macOS that ProcessFacts.cpp calls. The headers of Linux do not declare them, so the
// option `-include` in CMakeLists.txt includes this file in ProcessFacts.cpp.
#pragma once

#include <pthread.h>

#include <cstdint>

const char* getprogname();
int pthread_threadid_np(pthread_t thread, std::uint64_t* id);
