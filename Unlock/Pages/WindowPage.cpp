// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Pages/WindowPage.h"

namespace marrowby {

std::optional<ControlID> controlOf(const WindowRow& row) {
    return std::visit(
        [](const auto& value) -> std::optional<ControlID> {
            if constexpr (requires { value.id; }) return value.id;
            if constexpr (requires { value.buttons; }) {
                if (!value.buttons.empty()) return value.buttons.front().id;
            }
            return std::nullopt;
        },
        row);
}

}  // namespace marrowby
