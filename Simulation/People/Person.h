// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace marrowby {

struct PersonModel;

/// A made-up person, determined by a seed. Immutable; any thread may use it. Copies share the model
/// of a few MB, which takes some tenths of a second to make.
class Person {
  public:
    explicit Person(std::uint64_t seed);

    [[nodiscard]] std::uint64_t seed() const { return seed_; }
    [[nodiscard]] const PersonModel& model() const { return *model_; }

  private:
    std::uint64_t seed_;
    std::shared_ptr<const PersonModel> model_;
};

/// Seeds of 200 people whom the embedder distinguishes (any two fronts below 0.55) and recognises.
[[nodiscard]] std::span<const std::uint64_t> distinctPeople();

}  // namespace marrowby
