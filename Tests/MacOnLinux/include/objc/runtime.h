// SPDX-License-Identifier: Apache-2.0

// Replaces GCC's header, whose inline functions clang rejects; declares the used part.
#pragma once
#include <objc/objc.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef struct objc_method* Method;
typedef struct objc_ivar* Ivar;

Class objc_getClass(const char* name);
Class objc_getRequiredClass(const char* name);
size_t class_getInstanceSize(Class type);
SEL sel_registerName(const char* name);

// Every association is strong here.
enum { OBJC_ASSOCIATION_RETAIN_NONATOMIC = 1 };
void objc_removeAssociatedObjects(id object);
id objc_getAssociatedObject(id object, const void* key);
void objc_setAssociatedObject(id object, const void* key, id value, unsigned long policy);
#ifdef __cplusplus
}
#endif
