#pragma once
#include_next <objc/objc.h>

// GCC's are typed, and then no selector can be nil.
#ifdef __cplusplus
#undef nil
#undef Nil
#define nil nullptr
#define Nil nullptr
#endif
