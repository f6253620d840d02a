// SPDX-License-Identifier: Apache-2.0

// Implements include/AppKit.

#include <algorithm>
#include <set>

#import <AppKit/AppKit.h>

static id valueOf(id object, const void* key) {
    return objc_getAssociatedObject(object, key);
}
static void setValueOf(id object, const void* key, id value) {
    objc_setAssociatedObject(object, key, value, OBJC_ASSOCIATION_RETAIN_NONATOMIC);
}

/// A stored property.
#define KEPT(Type, get, set)                \
    static const char get##Key = 0;         \
    -(Type)get {                            \
        return valueOf(self, &get##Key);    \
    }                                       \
    -(void)set : (Type)value {              \
        setValueOf(self, &get##Key, value); \
    }

/// A property without effect.
#define IGNORED(Type, get, set, value)  \
    -(Type)get {                        \
        return value;                   \
    }                                   \
    -(void)set : (Type)__unused given { \
    }

// ---- Layout ----

namespace {

const char widthKey = 0;
const char heightKey = 0;
const char fillKey = 0;
/// Content views of windows whose layout is outdated.
std::set<const void*> changedContents;

}  // namespace

/// A width or a height: fixed, or as wide as the stack.
@interface MacDimension : NSLayoutDimension
@property(nonatomic) NSView* view;
@property(nonatomic) const void* key;
@end

@implementation MacDimension
+ (instancetype)of:(NSView*)view under:(const void*)key {
    MacDimension* const made = [[self alloc] init];
    made.view = view;
    made.key = key;
    return made;
}
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)__unused anchor
                                      constant:(CGFloat)__unused constant {
    setValueOf(self.view, &fillKey, @(1));
    return [[NSLayoutConstraint alloc] init];
}
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor {
    return [self constraintEqualToAnchor:anchor constant:0];
}
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)constant {
    setValueOf(self.view, self.key, @(constant));
    return [[NSLayoutConstraint alloc] init];
}
@end

#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
// Replaces GNUstep's methods, which drive its own layout.
@implementation NSLayoutConstraint (MacOnLinux)
+ (void)activateConstraints:(NSArray*)__unused constraints {
}
- (void)setActive:(BOOL)__unused active {
}
@end

@implementation NSLayoutAnchor (MacOnLinux)
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)__unused anchor {
    return [[NSLayoutConstraint alloc] init];
}
@end

static NSSize wantedSize(NSView* view, CGFloat width) {
    NSSize size;
    if ([view isKindOfClass:NSScrollView.class]) {
        size = NSMakeSize(width, 60);
    } else if ([view isKindOfClass:NSStackView.class]) {
        size = [static_cast<NSStackView*>(view) sizeForWidth:width];
    } else if ([view isKindOfClass:NSSwitch.class]) {
        size = NSMakeSize(44, 22);
    } else if ([view isKindOfClass:NSImageView.class]) {
        size = NSMakeSize(18, 18);
    } else if ([view isKindOfClass:NSTextField.class] &&
               !static_cast<NSTextField*>(view).isEditable) {
        const NSRect room = NSMakeRect(0, 0, width > 0 ? width : 380, 1000);
        size = [static_cast<NSTextField*>(view).cell cellSizeForBounds:room];
        size.height += 2;
    } else if ([view isKindOfClass:NSControl.class]) {
        size = static_cast<NSCell*>(static_cast<NSControl*>(view).cell).cellSize;
    } else {
        size = view.intrinsicContentSize;
    }
    if (NSNumber* const fixed = valueOf(view, &widthKey)) size.width = fixed.doubleValue;
    if (NSNumber* const fixed = valueOf(view, &heightKey)) size.height = fixed.doubleValue;
    return size;
}

@implementation NSStackView {
    NSMutableArray<NSView*>* _arranged;
}

@synthesize orientation, alignment, spacing, edgeInsets, distribution;

+ (void)initialize {
    if (self != NSStackView.class) return;
    [NSNotificationCenter.defaultCenter addObserver:self
                                           selector:@selector(windowDidUpdate:)
                                               name:NSWindowDidUpdateNotification
                                             object:nil];
}
/// Lays changed views out after every event.
+ (void)windowDidUpdate:(NSNotification*)note {
    NSView* const content = static_cast<NSWindow*>(note.object).contentView;
    if (changedContents.erase((__bridge void*)content) > 0)
        [static_cast<NSStackView*>(content) arrange];
}
- (void)changed {
    NSView* const content = self.window.contentView;
    if ([content isKindOfClass:NSStackView.class]) changedContents.insert((__bridge void*)content);
}

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self) {
        _arranged = [[NSMutableArray alloc] init];
        self.spacing = 8;
    }
    return self;
}
+ (instancetype)stackViewWithViews:(NSArray<NSView*>*)views {
    NSStackView* const made = [[self alloc] initWithFrame:NSZeroRect];
    for (NSView* view in views)
        [made addArrangedSubview:view];
    return made;
}
- (NSArray<NSView*>*)arrangedSubviews {
    return [_arranged copy];
}
- (void)addArrangedSubview:(NSView*)view {
    [self insertArrangedSubview:view atIndex:static_cast<NSInteger>(_arranged.count)];
}
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index {
    [_arranged removeObjectIdenticalTo:view];
    [_arranged insertObject:view atIndex:static_cast<NSUInteger>(index)];
    if (view.superview != self) [self addSubview:view];
    [self changed];
}
- (void)removeArrangedSubview:(NSView*)view {
    [_arranged removeObjectIdenticalTo:view];
}
- (void)willRemoveSubview:(NSView*)view {
    [_arranged removeObjectIdenticalTo:view];
    [super willRemoveSubview:view];
    [self changed];
}
- (void)setHuggingPriority:(NSLayoutPriority)__unused priority
            forOrientation:(NSLayoutConstraintOrientation)__unused direction {
}
- (void)setViews:(NSArray<NSView*>*)views inGravity:(NSStackViewGravity)__unused gravity {
    for (NSView* view in [_arranged copy])
        [view removeFromSuperview];
    for (NSView* view in views)
        [self addArrangedSubview:view];
}

- (bool)isVertical {
    return self.orientation == NSUserInterfaceLayoutOrientationVertical;
}
- (NSArray<NSView*>*)shown {
    NSMutableArray<NSView*>* const shown = [NSMutableArray array];
    for (NSView* view in _arranged)
        if (!view.isHidden) [shown addObject:view];
    return shown;
}
/// The size that its views need.
- (NSSize)sizeForWidth:(CGFloat)width {
    const NSEdgeInsets edge = self.edgeInsets;
    CGFloat along = 0;
    CGFloat across = 0;
    for (NSView* view in self.shown) {
        const NSSize size = wantedSize(view, self.isVertical ? width - edge.left - edge.right : 0);
        along += (along > 0 ? self.spacing : 0) + (self.isVertical ? size.height : size.width);
        across = std::max(across, self.isVertical ? size.width : size.height);
    }
    const NSSize inner = self.isVertical ? NSMakeSize(across, along) : NSMakeSize(along, across);
    return NSMakeSize(inner.width + edge.left + edge.right, inner.height + edge.top + edge.bottom);
}
- (void)arrange {
    const NSEdgeInsets edge = self.edgeInsets;
    const NSSize whole = self.bounds.size;
    const CGFloat innerWidth = whole.width - edge.left - edge.right;
    const NSSize wanted = [self sizeForWidth:whole.width];
    const CGFloat rest =
        self.isVertical ? whole.height - wanted.height : whole.width - wanted.width;
    CGFloat at = self.isVertical ? edge.top : edge.left;
    bool isGiven = false;
    for (NSView* view in self.shown) {
        NSSize size = wantedSize(view, self.isVertical ? innerWidth : 0);
        if (!isGiven && ([view isKindOfClass:NSScrollView.class] ||
                         (!self.isVertical && [view isKindOfClass:NSStackView.class]))) {
            (self.isVertical ? size.height : size.width) += rest;
            isGiven = true;
        }
        if (self.isVertical && (valueOf(view, &fillKey) || [view isKindOfClass:NSTextField.class]))
            size.width = innerWidth;
        NSRect frame = self.isVertical ? NSMakeRect(edge.left, at, size.width, size.height)
                                       : NSMakeRect(at, (whole.height - size.height) / 2,
                                                    size.width, size.height);
        if (self.isVertical && !self.isFlipped) frame.origin.y = whole.height - at - size.height;
        // A window without its size yet leaves negative room.
        frame.size = NSMakeSize(std::max(frame.size.width, 0.0), std::max(frame.size.height, 0.0));
        view.frame = frame;
        NSView* inside = view;
        if ([view isKindOfClass:NSScrollView.class]) {
            NSScrollView* const scroll = static_cast<NSScrollView*>(view);
            inside = scroll.documentView;
            const CGFloat width = scroll.contentView.bounds.size.width;
            if ([inside isKindOfClass:NSStackView.class])
                inside.frame = NSMakeRect(0, 0, width, wantedSize(inside, width).height);
        }
        if ([inside isKindOfClass:NSStackView.class]) [static_cast<NSStackView*>(inside) arrange];
        at += (self.isVertical ? size.height : size.width) + self.spacing;
    }
    self.needsDisplay = YES;
}
- (void)resizeSubviewsWithOldSize:(NSSize)__unused size {
    [self arrange];
}
@end

@implementation NSView (MacOnLinux)
- (NSSize)fittingSize {
    return wantedSize(self, self.bounds.size.width);
}
- (void)layoutSubtreeIfNeeded {
    if ([self isKindOfClass:NSStackView.class]) [static_cast<NSStackView*>(self) arrange];
}
- (NSLayoutDimension*)widthAnchor {
    return [MacDimension of:self under:&widthKey];
}
- (NSLayoutDimension*)heightAnchor {
    return [MacDimension of:self under:&heightKey];
}
- (NSLayoutYAxisAnchor*)topAnchor {
    return [[NSLayoutYAxisAnchor alloc] init];
}
- (NSLayoutXAxisAnchor*)leadingAnchor {
    return [[NSLayoutXAxisAnchor alloc] init];
}
KEPT(NSString*, accessibilityLabel, setAccessibilityLabel)
KEPT(NSString*, accessibilityHelp, setAccessibilityHelp)
IGNORED(BOOL, translatesAutoresizingMaskIntoConstraints,
        setTranslatesAutoresizingMaskIntoConstraints, NO)
- (NSSize)intrinsicContentSize {
    return NSMakeSize(40, 20);
}
- (void)setContentHuggingPriority:(NSLayoutPriority)__unused priority
                   forOrientation:(NSLayoutConstraintOrientation)__unused orientation {
}
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)__unused priority
                                 forOrientation:(NSLayoutConstraintOrientation)__unused
    orientation {
}
@end

// ---- Controls ----

@implementation NSApplication (MacOnLinux)
- (void)activate {
    [self activateIgnoringOtherApps:YES];
}
@end

@implementation NSButton (MacOnLinux)
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
    NSButton* const made = [[self alloc] initWithFrame:NSZeroRect];
    made.title = title;
    made.target = target;
    made.action = action;
    made.bezelStyle = NSRoundedBezelStyle;
    return made;
}
IGNORED(BOOL, hasDestructiveAction, setHasDestructiveAction, NO)
@end

@implementation NSTextField (MacOnLinux)
+ (instancetype)wrappingLabelWithString:(NSString*)text {
    NSTextField* const made = [[self alloc] initWithFrame:NSZeroRect];
    made.stringValue = text;
    made.editable = NO;
    made.bezeled = NO;
    made.drawsBackground = NO;
    [made.cell setWraps:YES];
    return made;
}
@end

@implementation NSTextView (MacOnLinux)
+ (NSScrollView*)scrollableTextView {
    const NSRect frame = NSMakeRect(0, 0, 400, 150);
    NSScrollView* const scroll = [[NSScrollView alloc] initWithFrame:frame];
    scroll.documentView = [[self alloc] initWithFrame:frame];
    scroll.hasVerticalScroller = YES;
    return scroll;
}
@end

@implementation NSFont (MacOnLinux)
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(CGFloat)__unused weight {
    return [NSFont userFixedPitchFontOfSize:size];
}
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(CGFloat)__unused weight {
    return [NSFont systemFontOfSize:size];
}
@end

@implementation NSColor (MacOnLinux)
+ (NSColor*)separatorColor {
    return NSColor.grayColor;
}
+ (NSColor*)controlAccentColor {
    return NSColor.blueColor;
}
@end

@implementation NSImage (MacOnLinux)
+ (NSImage*)imageWithSystemSymbolName:(NSString*)__unused name
             accessibilityDescription:(NSString*)__unused description {
    return [[NSImage alloc] initWithSize:NSMakeSize(18, 18)];
}
@end

@implementation NSImageView (MacOnLinux)
KEPT(NSColor*, contentTintColor, setContentTintColor)
@end

// ---- Screens and windows ----

@implementation NSScreen (MacOnLinux)
@dynamic screens;
- (NSEdgeInsets)safeAreaInsets {
    return NSEdgeInsetsZero;
}
- (NSRect)auxiliaryTopLeftArea {
    return NSZeroRect;
}
- (NSRect)auxiliaryTopRightArea {
    return NSZeroRect;
}
@end

static const char behaviorKey = 0;
@implementation NSWindow (MacOnLinux)
- (NSWindowCollectionBehavior)collectionBehavior {
    return [valueOf(self, &behaviorKey) unsignedIntegerValue];
}
- (void)setCollectionBehavior:(NSWindowCollectionBehavior)behavior {
    setValueOf(self, &behaviorKey, @(behavior));
}
IGNORED(NSWindowAnimationBehavior, animationBehavior, setAnimationBehavior, 0)
IGNORED(BOOL, isMovable, setMovable, YES)
IGNORED(BOOL, canBecomeVisibleWithoutLogin, setCanBecomeVisibleWithoutLogin, NO)
@end

int CGShieldingWindowLevel(void) {
    return 2147483628;
}
