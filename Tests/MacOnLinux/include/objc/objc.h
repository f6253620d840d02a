// SPDX-License-Identifier: Apache-2.0
#pragma once
#include_next <objc/objc.h>

// Clang's literals; GCC's cannot be boxed.
#undef YES
#undef NO
#define YES __objc_yes
#define NO __objc_no

// GCC's are typed, so that no selector could be nil.
#ifdef __cplusplus
#undef nil
#undef Nil
#define nil nullptr
#define Nil nullptr
#endif
