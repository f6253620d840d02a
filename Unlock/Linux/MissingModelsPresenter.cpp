// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/MissingModelsPresenter.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

WindowPage MissingModelsPresenter::page() const {
    using Row = WindowRow;
    using Control = WindowControl;
    WindowPage page{
        .title = translated("Marrowby Unlock needs its models"),
        .detail = translated(
            "It recognises faces with published neural networks, which it doesn’t bring "
            "along. They are downloaded once, 46 MB, and every file is checked against a known "
            "sum."),
        .rows = {},
        .problem = {},
        .buttons = {{.id = {Control::quit}, .title = translated("Quit")}}};
    if (progress_) {
        page.rows = {Row::Status{.isGood = true,
                                 .title = translated("Preparing the models …"),
                                 .detail = *progress_,
                                 .fix = {}}};
        page.buttons.push_back(
            {.id = {Control::cancel}, .title = translated("Cancel"), .isDefault = true});
        return page;
    }
    page.rows = {
        Row::Status{.isGood = false,
                    .title = translated("It can’t recognise anybody yet"),
                    .detail = problem_,
                    .fix = {}},
        Row::Text{translated("This command prepares them in a terminal:")}, Row::Log{{command_}},
        Row::Actions{
            .title = {},
            .detail = {},
            .buttons = {{.id = {Control::copyCommand}, .title = translated("Copy the Command")}}}};
    page.buttons.push_back({.id = {Control::goForward}, .title = translated("Look Again")});
    if (hooks_.onPrepare)
        page.buttons.push_back(
            {.id = {Control::prepareModels},
             .title = hasBegun_ ? translated("Go On") : translated("Prepare Them")});
    page.buttons.back().isDefault = true;
    return page;
}

void MissingModelsPresenter::press(ControlID id) {
    if (id.control == WindowControl::goForward) hooks_.onLookAgain();
    if (id.control == WindowControl::quit) hooks_.onQuit();
    if (id.control == WindowControl::prepareModels) hooks_.onPrepare();
    if (id.control == WindowControl::cancel) hooks_.onCancel();
    if (id.control == WindowControl::copyCommand) hooks_.onCopy(command_);
}

}  // namespace marrowby
