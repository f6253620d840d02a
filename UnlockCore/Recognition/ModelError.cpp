// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/ModelError.h"

namespace marrowby {

namespace {

struct DescribeModelError {
    std::string name;
    std::string preparedFor;

    std::string operator()(const modelerror::NotFound& error) const {
        return "The " + name + " isn’t " + std::string(error.place) + " (" + error.fileName +
               "). " + std::string(error.remedy);
    }
    std::string operator()(const modelerror::LoadFailed& error) const {
        return "The " + name + " couldn’t be loaded: " + error.reason;
    }
    std::string operator()(const modelerror::WrongModel& error) const {
        return "The " + name + " isn’t the one this version expects: " + error.reason;
    }
    std::string operator()(const modelerror::UnexpectedInput& error) const {
        return "The " + name + " takes the wrong input: " + error.reason;
    }
    std::string operator()(const modelerror::UnexpectedOutput& error) const {
        return "The " + name + " gave something unexpected: " + error.reason;
    }
    std::string operator()(const modelerror::PixelBuffer& /*error*/) const {
        return "The face couldn’t be prepared for the " + preparedFor + ".";
    }
    std::string operator()(const modelerror::PredictionFailed& error) const {
        return error.systemText;
    }
};

}  // namespace

std::string description(const FaceModelError& error) {
    return std::visit(DescribeModelError{.name = "face model", .preparedFor = "model"}, error);
}

std::string description(const RealFaceModelError& error) {
    return std::visit(
        DescribeModelError{.name = "real-face model", .preparedFor = "real-face model"}, error);
}

}  // namespace marrowby
