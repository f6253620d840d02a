// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string_view>

namespace marrowby {

/// The SHA-256 of the standard pack's files as published, by the model's role. Tools/modelpack has
/// the same sums, and the origins.
struct PublishedFile {
    std::string_view role;
    std::string_view sha256;
};

inline constexpr std::array<PublishedFile, 5> publishedFiles{{
    {"finder", "8f2383e4dd3cfbb4553ea8718107fc0423210dc964f9f4280604804ed2552fa4"},
    {"landmarks", "74d1a83932af79c2689d9371b21f32d014552f089985f076e832e89cb18f41e8"},
    {"embedder", "0ba9fbfa01b5270c96627c4ef784da859931e02f04419c829e83484087c34e79"},
    {"realFace", "a5eb02e1843f19b5386b953cc4c9f011c3f985d0ee2bb9819eea9a142099bec0"},
    {"realFace", "84ee1d37d96894d5e82de5a57df044ef80a58be2b218b5ed7cdfd875ec2f5990"},
}};

}  // namespace marrowby
