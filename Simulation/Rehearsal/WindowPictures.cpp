// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/WindowPictures.h"

#include "Simulation/Desktop/PrivateFolder.h"
#include "Simulation/Rehearsal/Stage.h"
#include "Simulation/Rehearsal/Story.h"

#include <array>

namespace marrowby {

namespace {

using Step = std::expected<void, std::string>;

constexpr std::array scales{2, 1};

/// Large enough for the windows as they open on most screens.
PrivateScreen screen(int scale) {
    return {.width = 1280, .height = 800, .scale = scale};
}

/// The window that opens when the program is started once more.
Step picture(Stage& stage, const std::filesystem::path& folder, const std::string& name,
             int scale) {
    if (auto opened = stage.openApplication(); !opened) return opened;
    const auto window = stage.windowPicture();
    if (!window) return std::unexpected(window.error());
    const auto file = folder / (name + (scale == 1 ? "" : "@2x") + ".png");
    constexpr int smallest = 0;
    if (window->save(QString::fromStdString(file.string()), "PNG", smallest)) return {};
    return std::unexpected(file.string() + " couldn’t be written.");
}

}  // namespace

Step takeWindowPictures(const std::filesystem::path& models, const std::filesystem::path& program,
                        const std::filesystem::path& folder) {
    const auto home = PrivateFolder::create();
    if (!home) return std::unexpected(home.error());
    for (const int scale : scales) {
        const auto stage =
            Stage::create({.models = models, .program = program, .screen = screen(scale)});
        if (!stage) return std::unexpected(stage.error());
        if (auto taken = picture(**stage, folder, "welcome", scale); !taken) return taken;
        if (scale != scales.back()) continue;
        if (auto closed = (*stage)->closeWindow(); !closed) return closed;
        if (auto ready = acts().front().play(**stage); !ready)
            return std::unexpected(ready.error());
        if (auto kept = (*stage)->keepHome(home->path()); !kept) return kept;
    }
    for (const int scale : scales) {
        const auto stage = Stage::create(
            {.models = models, .program = program, .home = home->path(), .screen = screen(scale)});
        if (!stage) return std::unexpected(stage.error());
        if (auto confirmed = confirmOwner(**stage); !confirmed) return confirmed;
        if (auto taken = picture(**stage, folder, "settings", scale); !taken) return taken;
    }
    const auto german = Stage::create({.models = models,
                                       .program = program,
                                       .home = home->path(),
                                       .screen = screen(1),
                                       .language = "de"});
    if (!german) return std::unexpected(german.error());
    return picture(**german, folder, "settings-de", 1);
}

}  // namespace marrowby
