#include "Unlock/Linux/MissingModelsPresenter.h"

namespace marrowby {

WindowPage MissingModelsPresenter::page() const {
    using Row = WindowRow;
    return {
        .title = "Marrowby Unlock needs its models",
        .detail =
            "It recognises faces with published neural networks, which it doesn’t bring "
            "along.",
        .rows = {Row::Status{.isGood = false,
                             .title = "It can’t recognise anybody yet",
                             .detail = problem_,
                             .fix = {}},
                 Row::Text{"This command, in a terminal, downloads and prepares them once. "
                           "Every file is checked against a known sum."},
                 Row::Log{{command_}}},
        .problem = {},
        .buttons = {{.id = {WindowControl::quit}, .title = "Quit"},
                    {.id = {WindowControl::goForward}, .title = "Look Again", .isDefault = true}}};
}

void MissingModelsPresenter::press(ControlID id) {
    if (id.control == WindowControl::goForward) hooks_.onLookAgain();
    if (id.control == WindowControl::quit) hooks_.onQuit();
}

}  // namespace marrowby
