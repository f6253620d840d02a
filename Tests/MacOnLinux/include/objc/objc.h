#pragma once
#include_next <objc/objc.h>

// Clang's own; GCC's can't be boxed.
#undef YES
#undef NO
#define YES __objc_yes
#define NO __objc_no

// GCC's are typed, and then no selector can be nil.
#ifdef __cplusplus
#undef nil
#undef Nil
#define nil nullptr
#define Nil nullptr
#endif
