// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/OwnerCheck.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

namespace {

struct DescribeOwnerCheckError {
    const PlatformWords& words;

    std::string operator()(const OwnerCheckError::Unavailable& error) const {
        return translated("{system} can’t check it’s you right now. {explanation}",
                          {{"system", words.system}, {"explanation", error.explanation}});
    }
    std::string operator()(const OwnerCheckError::Cancelled& /*unused*/) const {
        return translated("Cancelled.");
    }
};

}  // namespace

std::string description(const OwnerCheckError& error, const PlatformWords& words) {
    return std::visit(DescribeOwnerCheckError{.words = words}, error);
}

}  // namespace marrowby
