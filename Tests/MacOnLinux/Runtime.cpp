// SPDX-License-Identifier: Apache-2.0

// Implements clang's message sending, ARC entry points and class layout on GCC's Objective-C
// runtime, which Debian's GNUstep uses and which has none of them.

#include <cstddef>
#include <utility>

#include <objc/message.h>
#include <objc/objc.h>
#include <objc/runtime.h>

namespace {

/// Reads the receiver here, so that AddressSanitizer checks it: GNUstep is not instrumented.
id seen(id receiver) {
    if (receiver) (void)*reinterpret_cast<const volatile char*>(receiver);
    return receiver;
}

id send(id object, const char* name) {
    const SEL selector = sel_registerName(name);
    if (!seen(object)) return object;
    return reinterpret_cast<id (*)(id, SEL)>(objc_msg_lookup(object, selector))(object, selector);
}

/// A method's result that its caller has not retained yet: as on a Mac, no pool holds it.
thread_local id handedOver = nullptr;

/// Class metadata as the compiler emits it; each array has the length given before it.
struct InstanceVariables {
    int count;
    struct {
        const char* name;
        const char* type;
        int offset;
    } list[1];
};
struct ProtocolList;
struct ProtocolDefinition {
    std::size_t version;
    const char* name;
    ProtocolList* inherited;
};
struct ProtocolList {
    ProtocolList* next;
    std::size_t count;
    ProtocolDefinition* list[1];
};
struct ClassDefinition {
    void* isa;
    const char* superclass;
    const char* name;
    long version;
    unsigned long info;
    long size;
    InstanceVariables* variables;
    void* methods;
    void* table;
    void* subclasses;
    void* siblings;
    ProtocolList* protocols;
    void* collector;
    long abi;
    int** offsets;
};
struct Symbols {
    unsigned long selectorCount;
    void* selectors;
    unsigned short classCount;
    unsigned short categoryCount;
    ClassDefinition* classes[1];
};
struct Module {
    unsigned long version;
    unsigned long size;
    const char* name;
    Symbols* symbols;
};

/// GCC's runtime accepts only its own version; the newer one only adds fields at the end.
void makeProtocolsOld(ProtocolList* all) {
    for (; all; all = all->next) {
        ProtocolDefinition** const list = &all->list[0];
        for (std::size_t i = 0; i < all->count; ++i) {
            list[i]->version = 2;
            makeProtocolsOld(list[i]->inherited);
        }
    }
}

}  // namespace

extern "C" {

// ---- Messages ----

struct Slot {
    Class owner;
    Class cachedFor;
    const char* types;
    int version;
    IMP method;
};

static thread_local Slot slot;

Slot* objc_msg_lookup_sender(id* receiver, SEL selector, id /*sender*/) {
    slot.method = objc_msg_lookup(seen(*receiver), selector);
    return &slot;
}

Slot* objc_slot_lookup_super(objc_super* receiver, SEL selector) {
    slot.method = objc_msg_lookup_super(receiver, selector);
    return &slot;
}

// ---- Reference counting ----

id objc_retain(id object) {
    return send(object, "retain");
}
void objc_release(id object) {
    send(object, "release");
}
id objc_autorelease(id object) {
    return send(object, "autorelease");
}
id objc_retainBlock(id block) {
    return send(block, "copy");
}

id objc_autoreleaseReturnValue(id object) {
    objc_autorelease(std::exchange(handedOver, object));
    return object;
}
id objc_retainAutoreleasedReturnValue(id object) {
    if (!object || object != handedOver) return objc_retain(object);
    handedOver = nullptr;
    return object;
}
id objc_retainAutoreleaseReturnValue(id object) {
    return objc_autoreleaseReturnValue(objc_retain(object));
}
id objc_retainAutorelease(id object) {
    return objc_autorelease(objc_retain(object));
}

void objc_storeStrong(id* place, id object) {
    objc_retain(object);
    objc_release(std::exchange(*place, object));
}
void objc_setProperty_nonatomic_copy(id self, SEL /*selector*/, id value, std::ptrdiff_t offset) {
    auto* const place = reinterpret_cast<id*>(reinterpret_cast<char*>(self) + offset);
    objc_release(std::exchange(*place, send(value, "copy")));
}

void* objc_autoreleasePoolPush() {
    return send(send(reinterpret_cast<id>(objc_getClass("NSAutoreleasePool")), "alloc"), "init");
}
void objc_autoreleasePoolPop(void* pool) {
    objc_autorelease(std::exchange(handedOver, nullptr));
    send(static_cast<id>(pool), "release");
}

// ---- Classes ----

void __real___objc_exec_class(Module* module);

/// Clang leaves instance variable offsets to the runtime: they follow the superclass's, which must
/// be GNUstep's.
void __wrap___objc_exec_class(Module* module) {
    constexpr long alignment = 16;
    module->version = 8;
    module->size = sizeof(Module);
    ClassDefinition** const classes = &module->symbols->classes[0];
    for (unsigned short i = 0; i < module->symbols->classCount; ++i) {
        ClassDefinition& defined = *classes[i];
        makeProtocolsOld(defined.protocols);
        if (defined.size > 0) continue;
        const int count = defined.variables ? defined.variables->count : 0;
        const Class superclass = count > 0 ? objc_getRequiredClass(defined.superclass)
                                           : objc_getClass(defined.superclass);
        const auto inherited = static_cast<long>(class_getInstanceSize(superclass));
        const long begin = (inherited + alignment - 1) & -alignment;
        auto* const variables = count > 0 ? &defined.variables->list[0] : nullptr;
        const int shift = count > 0 ? static_cast<int>(begin) - variables->offset : 0;
        for (int k = 0; k < count; ++k)
            *defined.offsets[k] = variables[k].offset += shift;
        defined.size = begin - defined.size + alignment;
    }
    __real___objc_exec_class(module);
}
}
