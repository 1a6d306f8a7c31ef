// Functions of macOS that ProcessFacts.cpp calls, declared by hand. The compiler includes this file
// first.
#pragma once

#include <pthread.h>

#include <cstdint>

const char* getprogname();
int pthread_threadid_np(pthread_t thread, std::uint64_t* id);
