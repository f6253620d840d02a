// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/PageRow.h"

#include "Platforms/macOS/FoundationText.h"
#include "Unlock/macOS/CameraView.h"
#include "Unlock/macOS/ControlTarget.h"
#include "Unlock/macOS/GuideRingView.h"
#include "Unlock/macOS/PageWindow.h"

#include <cstring>
#include <span>
#include <utility>
#include <variant>

/// A horizontal stack on a card.
@interface MarrowbyCardView : NSStackView
@end

@implementation MarrowbyCardView

- (void)drawRect:(NSRect)__unused dirtyRect {
    constexpr CGFloat corner = 8;
    NSBezierPath* const card =
        [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(self.bounds, 0.5, 0.5)
                                        xRadius:corner
                                        yRadius:corner];
    [NSColor.controlBackgroundColor setFill];
    [card fill];
    [NSColor.separatorColor setStroke];
    [card stroke];
}

@end

namespace marrowby {

namespace {

using Window = std::weak_ptr<PageWindow>;

constexpr CGFloat cardMargin = 12;
constexpr CGFloat logHeight = 150;
constexpr CGFloat fieldWidth = 240;

NSColor* markColor(bool isGood) {
    return isGood ? NSColor.systemGreenColor : NSColor.systemOrangeColor;
}

class LabelRow final : public PageRow {
  public:
    LabelRow(const WindowRow& row, NSFont* font) : PageRow(row) {
        label_ = pageLabel(font, NSColor.labelColor);
        setView(label_);
    }
    void show(const WindowRow& row) override {
        if (const auto* heading = std::get_if<WindowRow::Heading>(&row))
            showText(label_, heading->text);
        if (const auto* text = std::get_if<WindowRow::Text>(&row)) showText(label_, text->text);
    }

  private:
    NSTextField* label_;
};

/// A card: mark, title, detail, and controls on the right.
class CardRow : public PageRow {
  protected:
    explicit CardRow(const WindowRow& row)
        : PageRow(row),
          title_(pageLabel([NSFont systemFontOfSize:NSFont.systemFontSize], NSColor.labelColor)),
          detail_(pageLabel([NSFont systemFontOfSize:NSFont.smallSystemFontSize],
                            NSColor.secondaryLabelColor)) {
        NSStackView* const texts = [NSStackView stackViewWithViews:@[ title_, detail_ ]];
        texts.orientation = NSUserInterfaceLayoutOrientationVertical;
        texts.alignment = NSLayoutAttributeLeading;
        texts.spacing = 2;
        [texts setHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
        line_ = [MarrowbyCardView stackViewWithViews:@[ texts ]];
        line_.edgeInsets = NSEdgeInsetsMake(cardMargin, cardMargin, cardMargin, cardMargin);
        line_.spacing = cardMargin;
        line_.distribution = NSStackViewDistributionFill;
        setView(line_);
    }

    void lead(NSView* view) { [line_ insertArrangedSubview:view atIndex:0]; }
    void trail(NSView* view) {
        [view setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                         forOrientation:NSLayoutConstraintOrientationHorizontal];
        [line_ addArrangedSubview:view];
    }
    void showTitle(const std::string& title, const std::string& detail, NSView* control) {
        showText(title_, title);
        showText(detail_, detail);
        control.accessibilityLabel = foundationText(title);
        control.accessibilityHelp = foundationText(detail);
    }
    void strengthenTitle() { title_.font = [NSFont boldSystemFontOfSize:NSFont.systemFontSize]; }

  private:
    NSTextField* title_;
    NSTextField* detail_;
    NSStackView* line_;
};

class StatusRow final : public CardRow {
  public:
    StatusRow(const WindowRow& row, Window window)
        : CardRow(row), window_(std::move(window)), mark_([[NSImageView alloc] init]) {
        lead(mark_);
        trail(strip_.view());
        strengthenTitle();
    }
    void show(const WindowRow& row) override {
        const auto& status = std::get<WindowRow::Status>(row);
        showTitle(status.title, status.detail, nil);
        mark_.image =
            [NSImage imageWithSystemSymbolName:status.isGood ? @"checkmark.circle.fill"
                                                             : @"exclamationmark.circle.fill"
                      accessibilityDescription:nil];
        mark_.contentTintColor = markColor(status.isGood);
        strip_.show(status.fix ? std::vector{*status.fix} : std::vector<WindowButton>(), window_);
    }

  private:
    Window window_;
    NSImageView* mark_;
    PageButtons strip_;
};

class ToggleRow final : public CardRow {
  public:
    // Blocks capture by reference what is passed by reference, so parameters are values.
    ToggleRow(const WindowRow& row, Window window)
        : CardRow(row), control_([[NSSwitch alloc] init]) {
        const ControlID id = std::get<WindowRow::Toggle>(row).id;
        trail(control_);
        [MarrowbyControlTarget
            attachTo:control_
             calling:^(NSControl* control) {
               const bool isOn = static_cast<NSSwitch*>(control).state == NSControlStateValueOn;
               if (const auto owner = window.lock()) owner->toggle(id, isOn);
             }];
    }
    void show(const WindowRow& row) override {
        const auto& toggle = std::get<WindowRow::Toggle>(row);
        showTitle(toggle.title, toggle.detail, control_);
        control_.state = toggle.isOn ? NSControlStateValueOn : NSControlStateValueOff;
    }

  private:
    NSSwitch* control_;
};

class ChoiceRow final : public CardRow {
  public:
    ChoiceRow(const WindowRow& row, Window window)
        : CardRow(row), control_([[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO]) {
        const ControlID id = std::get<WindowRow::Choice>(row).id;
        trail(control_);
        [MarrowbyControlTarget attachTo:control_
                                calling:^(NSControl* control) {
                                  const NSInteger option =
                                      static_cast<NSPopUpButton*>(control).indexOfSelectedItem;
                                  const auto owner = window.lock();
                                  if (owner && option >= 0)
                                      owner->choose(id, static_cast<std::size_t>(option));
                                }];
    }
    void show(const WindowRow& row) override {
        const auto& choice = std::get<WindowRow::Choice>(row);
        showTitle(choice.title, choice.detail, control_);
        if (choice.options != options_) {
            options_ = choice.options;
            [control_ removeAllItems];
            // Not addItemWithTitle, which removes an existing item of the same title.
            for (const std::string& option : options_)
                [control_.menu addItemWithTitle:foundationText(option)
                                         action:nil
                                  keyEquivalent:@""];
        }
        [control_ selectItemAtIndex:static_cast<NSInteger>(choice.selected)];
    }

  private:
    NSPopUpButton* control_;
    std::vector<std::string> options_;
};

class ActionsRow final : public CardRow {
  public:
    ActionsRow(const WindowRow& row, Window window) : CardRow(row), window_(std::move(window)) {
        trail(strip_.view());
    }
    void show(const WindowRow& row) override {
        const auto& actions = std::get<WindowRow::Actions>(row);
        showTitle(actions.title, actions.detail, nil);
        strip_.show(actions.buttons, window_);
    }

  private:
    Window window_;
    PageButtons strip_;
};

class FieldRow : public CardRow {
  public:
    [[nodiscard]] NSView* field() const override { return field_; }

  protected:
    FieldRow(const WindowRow& row, NSTextField* field) : CardRow(row), field_(field) {
        trail(field_);
        [field_.widthAnchor constraintEqualToConstant:fieldWidth].active = YES;
    }
    [[nodiscard]] NSTextField* textField() const { return field_; }

  private:
    NSTextField* field_;
};

class TextFieldRow final : public FieldRow {
  public:
    TextFieldRow(const WindowRow& row, Window window) : FieldRow(row, [[NSTextField alloc] init]) {
        const ControlID id = std::get<WindowRow::TextField>(row).id;
        [MarrowbyControlTarget attachTo:textField()
                                calling:^(NSControl* control) {
                                  const auto owner = window.lock();
                                  if (owner) owner->enter(id, plainText(control.stringValue));
                                }];
    }
    void show(const WindowRow& row) override {
        const auto& wanted = std::get<WindowRow::TextField>(row);
        showTitle(wanted.title, {}, textField());
        // Setting it would move the cursor.
        if (plainText(textField().stringValue) != wanted.text)
            textField().stringValue = foundationText(wanted.text);
    }
};

class SecretFieldRow final : public FieldRow {
  public:
    explicit SecretFieldRow(const WindowRow& row)
        : FieldRow(row, [[NSSecureTextField alloc] init]),
          id_(std::get<WindowRow::SecretField>(row).id) {}
    void show(const WindowRow& row) override {
        showTitle(std::get<WindowRow::SecretField>(row).title, {}, textField());
    }
    [[nodiscard]] std::optional<Secret> takeSecret() override {
        @autoreleasepool {
            const char* const typed = textField().stringValue.UTF8String;
            const std::size_t size = typed ? std::strlen(typed) : 0;
            auto copy =
                SecretBytes::copyOf(std::span(reinterpret_cast<const std::uint8_t*>(typed), size));
            textField().stringValue = @"";
            return Secret{.id = id_,
                          .typed = copy ? std::optional(std::move(*copy)) : std::nullopt};
        }
    }

  private:
    ControlID id_;
};

class PictureRow final : public PageRow {
  public:
    explicit PictureRow(const WindowRow& row)
        : PageRow(row), camera_([[MarrowbyCameraView alloc] init]) {
        NSStackView* const stack = [NSStackView stackViewWithViews:@[ camera_ ]];
        stack.orientation = NSUserInterfaceLayoutOrientationVertical;
        stack.alignment = NSLayoutAttributeCenterX;
        setView(stack);
    }
    void show(const WindowRow& row) override {
        [camera_ showPicture:std::get<WindowRow::Picture>(row)];
    }

  private:
    MarrowbyCameraView* camera_;
};

class MeterRow final : public CardRow {
  public:
    explicit MeterRow(const WindowRow& row)
        : CardRow(row), meter_([[MarrowbyMeterView alloc] init]) {
        trail(meter_);
    }
    void show(const WindowRow& row) override {
        const auto& meter = std::get<WindowRow::Meter>(row);
        showTitle(meter.title, meter.detail, nil);
        [meter_ showMeter:meter];
    }

  private:
    MarrowbyMeterView* meter_;
};

class GuideRow final : public PageRow {
  public:
    explicit GuideRow(const WindowRow& row)
        : PageRow(row),
          ring_([[MarrowbyGuideRingView alloc] init]),
          hint_(pageLabel([NSFont boldSystemFontOfSize:NSFont.systemFontSize + 2],
                          NSColor.labelColor)) {
        hint_.alignment = NSTextAlignmentCenter;
        NSStackView* const stack = [NSStackView stackViewWithViews:@[ ring_, hint_ ]];
        stack.orientation = NSUserInterfaceLayoutOrientationVertical;
        stack.alignment = NSLayoutAttributeCenterX;
        stack.spacing = cardMargin;
        setView(stack);
    }
    void show(const WindowRow& row) override {
        const auto& guide = std::get<WindowRow::Guide>(row);
        [ring_ showGuide:guide];
        NSString* const hint = foundationText(guide.hint);
        if ([hint_.stringValue isEqualToString:hint]) return;
        hint_.stringValue = hint;
        NSAccessibilityPostNotificationWithUserInfo(
            NSApp, NSAccessibilityAnnouncementRequestedNotification,
            @{NSAccessibilityAnnouncementKey : hint});
    }

  private:
    MarrowbyGuideRingView* ring_;
    NSTextField* hint_;
};

class LogRow final : public PageRow {
  public:
    explicit LogRow(const WindowRow& row) : PageRow(row), scroll_([NSTextView scrollableTextView]) {
        NSTextView* const text = scroll_.documentView;
        text.editable = NO;
        text.font = [NSFont monospacedSystemFontOfSize:NSFont.smallSystemFontSize
                                                weight:NSFontWeightRegular];
        [scroll_.heightAnchor constraintEqualToConstant:logHeight].active = YES;
        setView(scroll_);
    }
    void show(const WindowRow& row) override {
        const auto& lines = std::get<WindowRow::Log>(row).lines;
        if (lines == shown_) return;
        shown_ = lines;
        std::string all;
        for (const std::string& line : lines)
            all.append(line).append("\n");
        NSTextView* const text = scroll_.documentView;
        text.string = foundationText(all);
        [text scrollToEndOfDocument:nil];
    }

  private:
    NSScrollView* scroll_;
    std::vector<std::string> shown_;
};

struct Maker {
    const WindowRow& row;
    const Window& window;
    using Made = std::shared_ptr<PageRow>;

    Made operator()(const WindowRow::Heading&) const {
        return std::make_shared<LabelRow>(row, [NSFont boldSystemFontOfSize:NSFont.systemFontSize]);
    }
    Made operator()(const WindowRow::Text&) const {
        return std::make_shared<LabelRow>(row, [NSFont systemFontOfSize:NSFont.systemFontSize]);
    }
    Made operator()(const WindowRow::Status&) const {
        return std::make_shared<StatusRow>(row, window);
    }
    Made operator()(const WindowRow::Toggle&) const {
        return std::make_shared<ToggleRow>(row, window);
    }
    Made operator()(const WindowRow::Choice&) const {
        return std::make_shared<ChoiceRow>(row, window);
    }
    Made operator()(const WindowRow::Actions&) const {
        return std::make_shared<ActionsRow>(row, window);
    }
    Made operator()(const WindowRow::TextField&) const {
        return std::make_shared<TextFieldRow>(row, window);
    }
    Made operator()(const WindowRow::SecretField&) const {
        return std::make_shared<SecretFieldRow>(row);
    }
    Made operator()(const WindowRow::Picture&) const { return std::make_shared<PictureRow>(row); }
    Made operator()(const WindowRow::Meter&) const { return std::make_shared<MeterRow>(row); }
    Made operator()(const WindowRow::Guide&) const { return std::make_shared<GuideRow>(row); }
    Made operator()(const WindowRow::Log&) const { return std::make_shared<LogRow>(row); }
};

}  // namespace

PageRow::PageRow(const WindowRow& row) : kind_(row.index()), id_(controlOf(row)) {}

std::shared_ptr<PageRow> PageRow::make(const WindowRow& row, const Window& window) {
    auto made = std::visit(Maker{row, window}, row);
    made->show(row);
    return made;
}

bool PageRow::fits(const WindowRow& row) const {
    return row.index() == kind_ && controlOf(row) == id_;
}

NSTextField* pageLabel(NSFont* font, NSColor* color) {
    NSTextField* const label = [NSTextField wrappingLabelWithString:@""];
    label.font = font;
    label.textColor = color;
    label.selectable = NO;
    [label setContentHuggingPriority:NSLayoutPriorityDefaultLow - 1
                      forOrientation:NSLayoutConstraintOrientationHorizontal];
    [label setContentCompressionResistancePriority:NSLayoutPriorityDefaultLow
                                    forOrientation:NSLayoutConstraintOrientationHorizontal];
    return label;
}

void showText(NSTextField* label, const std::string& text) {
    label.hidden = text.empty();
    label.stringValue = foundationText(text);
}

void PageButtons::show(const std::vector<WindowButton>& buttons, const Window& window) {
    if (buttons == shown_) return;
    shown_ = buttons;
    // A copy: blocks would capture the reference.
    const Window owning = window;
    NSMutableArray<NSView*>* const views = [NSMutableArray array];
    for (const WindowButton& button : buttons) {
        NSButton* const view = [NSButton buttonWithTitle:foundationText(button.title)
                                                  target:nil
                                                  action:nil];
        view.enabled = button.isEnabled;
        view.keyEquivalent = button.isDefault ? @"\r" : @"";
        view.hasDestructiveAction = button.isDestructive;
        if (!button.spokenTitle.empty())
            view.accessibilityLabel = foundationText(button.spokenTitle);
        const ControlID id = button.id;
        [MarrowbyControlTarget attachTo:view
                                calling:^(NSControl*) {
                                  if (const auto owner = owning.lock()) owner->press(id);
                                }];
        [views addObject:view];
    }
    [view_ setViews:views inGravity:NSStackViewGravityTrailing];
}

}  // namespace marrowby
