// SPDX-License-Identifier: Apache-2.0

// Makes Objective-C exceptions catchable in functions that clang compiled as C++. GNUstep throws
// GCC's, which C++ sees as foreign: where a function has a handler for the type, this rethrows a
// C++ exception with the same object.

#include <cstdint>
#include <cstring>
#include <typeinfo>

#include <cxxabi.h>
#include <unwind.h>

// From GCC's runtime.
extern "C" {
struct MacObjectiveCException {
    _Unwind_Exception header;
    void* object;
};
_Unwind_Reason_Code __gxx_personality_v0(int version, _Unwind_Action actions,
                                         _Unwind_Exception_Class kind, _Unwind_Exception* exception,
                                         _Unwind_Context* context);
bool MacObjectIsOf(void* object, const char* className);
}

namespace {

/// Matches any thrown object.
struct AnyObject final : std::type_info {
    AnyObject() : std::type_info("id") {}
    [[nodiscard]] bool __is_pointer_p() const override { return true; }
};

AnyObject anyObject;
thread_local _Unwind_Exception* caught = nullptr;

_Unwind_Exception* translated(void* object) {
    void* const place = __cxxabiv1::__cxa_allocate_exception(sizeof(void*));
    std::memcpy(place, &object, sizeof object);
    __cxxabiv1::__cxa_init_primary_exception(place, &anyObject, nullptr);
    return static_cast<_Unwind_Exception*>(place) - 1;
}

}  // namespace

namespace gnustep::libobjc {

/// The type info of a handler, as clang emits it.
struct __objc_class_type_info final : std::type_info {
    explicit __objc_class_type_info(const char* name) : std::type_info(name) {}
    ~__objc_class_type_info() override;
    bool __do_catch(const std::type_info* thrown, void** object, unsigned) const override {
        return thrown == &anyObject && MacObjectIsOf(*object, name());
    }
};

// Key function: emits the vtable here.
__objc_class_type_info::~__objc_class_type_info() = default;

}  // namespace gnustep::libobjc

extern "C" _Unwind_Reason_Code __gnustep_objcxx_personality_v0(int version, _Unwind_Action actions,
                                                               _Unwind_Exception_Class kind,
                                                               _Unwind_Exception* exception,
                                                               _Unwind_Context* context) {
    constexpr std::uint64_t objectiveC = 0x474e55434f424a43;  // "GNUCOBJC"
    if (kind != objectiveC) return __gxx_personality_v0(version, actions, kind, exception, context);
    if ((actions & _UA_SEARCH_PHASE) != 0) {
        caught = translated(reinterpret_cast<MacObjectiveCException*>(exception)->object);
        return __gxx_personality_v0(version, actions, caught->exception_class, caught, context);
    }
    if ((actions & _UA_HANDLER_FRAME) == 0)
        return __gxx_personality_v0(version, actions, kind, exception, context);
    return __gxx_personality_v0(version, actions, caught->exception_class, caught, context);
}
