// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/PageWindow.h"

#include "Platforms/macOS/FoundationText.h"

#include <algorithm>
#include <utility>

/// Reports its closing by the user, also by Escape.
@interface MarrowbyPageWindow : NSWindow <NSWindowDelegate>
@property(nonatomic, copy) void (^onClose)(void);
/// The user gave it a size.
@property(nonatomic) BOOL hasUsersSize;
@end

@implementation MarrowbyPageWindow

- (void)cancelOperation:(id)sender {
    [self performClose:sender];
}

- (void)windowDidEndLiveResize:(NSNotification*)__unused notification {
    self.hasUsersSize = YES;
}

- (BOOL)windowShouldClose:(NSWindow*)__unused sender {
    if (self.onClose) self.onClose();
    // PageWindow closes it.
    return NO;
}

@end

/// Flipped: laid out from the top.
@interface MarrowbyFlippedStackView : NSStackView
@end

@implementation MarrowbyFlippedStackView

- (BOOL)isFlipped {
    return YES;
}

@end

namespace marrowby {

namespace {

constexpr CGFloat margin = 22;
constexpr CGFloat rowSpacing = 10;
constexpr NSSize firstSize{600, 680};
constexpr NSSize smallestSize{320, 160};
constexpr CGFloat greatestHeight = 760;

}  // namespace

std::shared_ptr<PageWindow> PageWindow::make(WindowPresenter& presenter,
                                             std::function<void()> onClosed) {
    const std::shared_ptr<PageWindow> made(new PageWindow(presenter, std::move(onClosed)));
    made->build();
    made->draw(presenter.page());
    [made->window_ center];
    return made;
}

PageWindow::PageWindow(WindowPresenter& presenter, std::function<void()> onClosed)
    : presenter_(&presenter),
      onClosed_(std::move(onClosed)),
      window_([[MarrowbyPageWindow alloc]
          initWithContentRect:NSMakeRect(0, 0, firstSize.width, firstSize.height)
                    styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                              NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                      backing:NSBackingStoreBuffered
                        defer:YES]),
      title_(pageLabel([NSFont boldSystemFontOfSize:22], NSColor.labelColor)),
      detail_(
          pageLabel([NSFont systemFontOfSize:NSFont.systemFontSize], NSColor.secondaryLabelColor)),
      problem_(pageLabel([NSFont systemFontOfSize:NSFont.systemFontSize], NSColor.systemRedColor)),
      scroll_([[NSScrollView alloc] init]),
      content_([[MarrowbyFlippedStackView alloc] init]) {}

PageWindow::~PageWindow() {
    window_.onClose = nil;
    [window_ close];
}

void PageWindow::build() {
    window_.releasedWhenClosed = NO;
    window_.contentMinSize = smallestSize;
    window_.delegate = window_;
    window_.autorecalculatesKeyViewLoop = YES;
    const std::weak_ptr<PageWindow> weak = weak_from_this();
    window_.onClose = ^{
      if (const auto self = weak.lock()) self->closed();
    };

    content_.orientation = NSUserInterfaceLayoutOrientationVertical;
    content_.alignment = NSLayoutAttributeLeading;
    content_.spacing = rowSpacing;
    content_.translatesAutoresizingMaskIntoConstraints = NO;
    scroll_.drawsBackground = NO;
    scroll_.hasVerticalScroller = YES;
    scroll_.documentView = content_;
    [scroll_ setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationVertical];

    NSStackView* const all =
        [NSStackView stackViewWithViews:@[ title_, detail_, scroll_, problem_, buttons_.view() ]];
    all.orientation = NSUserInterfaceLayoutOrientationVertical;
    all.alignment = NSLayoutAttributeLeading;
    all.distribution = NSStackViewDistributionFill;
    all.spacing = rowSpacing;
    all.edgeInsets = NSEdgeInsetsMake(margin, margin, margin, margin);
    window_.contentView = all;
    for (NSView* view in @[ title_, detail_, scroll_, problem_, buttons_.view() ])
        [view.widthAnchor constraintEqualToAnchor:all.widthAnchor constant:-2 * margin].active =
            YES;
    NSView* const clip = scroll_.contentView;
    [NSLayoutConstraint activateConstraints:@[
        [content_.topAnchor constraintEqualToAnchor:clip.topAnchor],
        [content_.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor],
        [content_.widthAnchor constraintEqualToAnchor:clip.widthAnchor],
    ]];
}

void PageWindow::bringForward() {
    // An agent application is not activated automatically.
    [NSApp activate];
    [window_ makeKeyAndOrderFront:nil];
    [window_ orderFrontRegardless];
}

void PageWindow::refresh() {
    if (!presenter_) return;
    const WindowPage page = presenter_->page();
    if (page_ != page) draw(page);
}

void PageWindow::retire() {
    presenter_ = nullptr;
    for (const auto& row : rows_)
        (void)row->takeSecret();
    window_.onClose = nil;
    [window_ orderOut:nil];
    // Kept alive: one of its controls may be the caller.
    const auto self = shared_from_this();
    dispatch_async(dispatch_get_main_queue(), ^{
      (void)self;
    });
}

void PageWindow::closed() {
    if (!presenter_) return;
    WindowPresenter& presenter = *presenter_;
    onClosed_();
    presenter.windowClosed();
}

void PageWindow::draw(const WindowPage& page) {
    const bool isOtherPage = !page_ || page_->title != page.title;
    window_.title = foundationText(page.title);
    showText(title_, page.title);
    showText(detail_, page.detail);
    drawRows(page.rows);
    showText(problem_, page.problem);
    buttons_.show(page.buttons, weak_from_this());
    page_ = page;
    fit(isOtherPage);
    if (!isOtherPage) return;
    [scroll_.contentView scrollToPoint:NSZeroPoint];
    const auto typed =
        std::ranges::find_if(rows_, [](const auto& row) { return row->field() != nil; });
    [window_ makeFirstResponder:typed == rows_.end() ? nil : (*typed)->field()];
}

void PageWindow::fit(bool isOtherPage) {
    if (window_.hasUsersSize) return;
    NSView* const whole = window_.contentView;
    [whole layoutSubtreeIfNeeded];
    const CGFloat missing = content_.fittingSize.height - scroll_.contentView.bounds.size.height;
    const NSSize shown = whole.frame.size;
    const CGFloat titleBar = window_.frame.size.height - shown.height;
    NSScreen* const screen = window_.screen ? window_.screen : NSScreen.mainScreen;
    const CGFloat most = std::min(
        greatestHeight, screen ? screen.visibleFrame.size.height - titleBar : shown.height);
    const CGFloat height = std::min(std::max(shown.height + missing, smallestSize.height), most);
    if (height > shown.height || (isOtherPage && height < shown.height))
        [window_ setContentSize:NSMakeSize(shown.width, height)];
}

void PageWindow::drawRows(const std::vector<WindowRow>& rows) {
    auto old = std::exchange(rows_, {});
    for (const WindowRow& row : rows) {
        const auto fitting =
            std::ranges::find_if(old, [&row](const auto& one) { return one->fits(row); });
        if (fitting == old.end()) {
            rows_.push_back(PageRow::make(row, weak_from_this()));
        } else {
            (*fitting)->show(row);
            rows_.push_back(*fitting);
            old.erase(fitting);
        }
    }
    for (const auto& gone : old) {
        (void)gone->takeSecret();
        [gone->view() removeFromSuperview];
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        NSView* const view = rows_[i]->view();
        const auto place = static_cast<NSInteger>(i);
        // Reinserting a view would take the keyboard focus from it.
        if (place < static_cast<NSInteger>(content_.arrangedSubviews.count) &&
            content_.arrangedSubviews[i] == view)
            continue;
        const bool isNew = view.superview != content_;
        [content_ insertArrangedSubview:view atIndex:place];
        if (isNew) [view.widthAnchor constraintEqualToAnchor:content_.widthAnchor].active = YES;
    }
    // Released later: one of their controls may be the caller.
    dispatch_async(dispatch_get_main_queue(), ^{
      (void)old;
    });
}

void PageWindow::redraw() {
    if (presenter_) draw(presenter_->page());
}

void PageWindow::press(ControlID id) {
    for (const auto& row : rows_) {
        auto secret = row->takeSecret();
        if (secret && secret->typed && presenter_)
            presenter_->enter(secret->id, std::move(*secret->typed));
    }
    if (presenter_) presenter_->press(id);
    refresh();
}

void PageWindow::toggle(ControlID id, bool isOn) {
    if (presenter_) presenter_->toggle(id, isOn);
    redraw();
}

void PageWindow::choose(ControlID id, std::size_t option) {
    if (presenter_) presenter_->choose(id, option);
    redraw();
}

void PageWindow::enter(ControlID id, std::string text) {
    if (presenter_) presenter_->enter(id, std::move(text));
    refresh();
}

}  // namespace marrowby
