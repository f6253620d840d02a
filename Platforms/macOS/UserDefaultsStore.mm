// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/UserDefaultsStore.h"

#include "Platforms/macOS/FoundationText.h"

#include <utility>

namespace marrowby {

namespace {

DefaultsValue plainNumber(NSNumber* number) {
    const auto typed = (__bridge CFNumberRef)number;
    if (CFGetTypeID(typed) == CFBooleanGetTypeID()) return number.boolValue != NO;
    if (CFNumberIsFloatType(typed)) return number.doubleValue;
    return std::int64_t{number.longLongValue};
}

DefaultsValue plainValue(id object) {
    if ([object isKindOfClass:NSNumber.class]) return plainNumber(object);
    if ([object isKindOfClass:NSString.class]) return plainText(object);
    if (![object isKindOfClass:NSArray.class]) return std::monostate();
    std::vector<std::string> texts;
    for (id element in object) {
        if (![element isKindOfClass:NSString.class]) return std::monostate();
        texts.push_back(plainText(element));
    }
    return texts;
}

/// Nil for an unsupported type.
struct FoundationValue {
    id operator()(std::monostate) const { return nil; }
    id operator()(bool value) const { return @(value); }
    id operator()(std::int64_t value) const { return @(value); }
    id operator()(double value) const { return @(value); }
    id operator()(const std::string& value) const { return foundationText(value); }
    id operator()(const std::vector<std::string>& values) const {
        NSMutableArray<NSString*>* const texts = [NSMutableArray array];
        for (const std::string& value : values)
            [texts addObject:foundationText(value)];
        return texts;
    }
};

}  // namespace

std::optional<DefaultsValue> UserDefaultsStore::value(const std::string& key) const {
    const id object = [NSUserDefaults.standardUserDefaults objectForKey:foundationText(key)];
    if (!object) return std::nullopt;
    return plainValue(object);
}

void UserDefaultsStore::set(const std::string& key, DefaultsValue value) {
    const id object = std::visit(FoundationValue(), value);
    // Setting nil would remove the stored value.
    if (object) [NSUserDefaults.standardUserDefaults setObject:object forKey:foundationText(key)];
}

void UserDefaultsStore::remove(const std::string& key) {
    [NSUserDefaults.standardUserDefaults removeObjectForKey:foundationText(key)];
}

}  // namespace marrowby
