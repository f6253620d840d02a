// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/ModelError.h"

namespace marrowby {

namespace {

struct DescribeModelError {
    /// As the subject of a sentence.
    Phrase model;
    Phrase notPrepared;

    std::string operator()(const modelerror::NotFound& error) const {
        return translated("{model} isn’t {place} ({file}). {remedy}", {{"model", model},
                                                                       {"place", error.place},
                                                                       {"file", error.fileName},
                                                                       {"remedy", error.remedy}});
    }
    std::string operator()(const modelerror::LoadFailed& error) const {
        return translated("{model} couldn’t be loaded: {reason}",
                          {{"model", model}, {"reason", error.reason}});
    }
    std::string operator()(const modelerror::WrongModel& error) const {
        return translated("{model} isn’t the one this version expects: {reason}",
                          {{"model", model}, {"reason", error.reason}});
    }
    std::string operator()(const modelerror::UnexpectedInput& error) const {
        return translated("{model} takes the wrong input: {reason}",
                          {{"model", model}, {"reason", error.reason}});
    }
    std::string operator()(const modelerror::UnexpectedOutput& error) const {
        return translated("{model} gave something unexpected: {reason}",
                          {{"model", model}, {"reason", error.reason}});
    }
    std::string operator()(const modelerror::PixelBuffer& /*error*/) const {
        return translated(notPrepared);
    }
    std::string operator()(const modelerror::PredictionFailed& error) const {
        return error.systemText;
    }
};

}  // namespace

std::string description(const FaceModelError& error) {
    return std::visit(
        DescribeModelError{.model = Phrase("The face model"),
                           .notPrepared = Phrase("The face couldn’t be prepared for the model.")},
        error);
}

std::string description(const RealFaceModelError& error) {
    return std::visit(
        DescribeModelError{
            .model = Phrase("The real-face model"),
            .notPrepared = Phrase("The face couldn’t be prepared for the real-face model.")},
        error);
}

}  // namespace marrowby
