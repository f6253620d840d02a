// SPDX-License-Identifier: Apache-2.0

// Declares what the application uses of AppKit and GNUstep lacks. Ownership and calls match the
// Mac, appearance and layout do not.
#pragma once
#include_next <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#undef RELEASE

#import <CoreGraphics/CoreGraphics.h>
#include <dispatch/dispatch.h>

#define NSLineCapStyleRound NSRoundLineCapStyle
#define NSLineJoinStyleRound NSRoundLineJoinStyle

#define NSBitmapImageFileTypePNG NSPNGFileType

typedef NSInteger NSStackViewDistribution;
enum { NSStackViewDistributionFill = 0 };
typedef NSInteger NSStackViewGravity;
enum { NSStackViewGravityTrailing = 3 };
typedef NSInteger NSWindowAnimationBehavior;

/// Stacks its views at their natural sizes; a scroll view takes the rest.
@interface NSStackView : NSView
@property(nonatomic) NSUserInterfaceLayoutOrientation orientation;
@property(nonatomic) NSLayoutAttribute alignment;
@property(nonatomic) CGFloat spacing;
@property(nonatomic) NSEdgeInsets edgeInsets;
@property(nonatomic) NSStackViewDistribution distribution;
@property(nonatomic, readonly, copy) NSArray<NSView*>* arrangedSubviews;
+ (instancetype)stackViewWithViews:(NSArray<NSView*>*)views;
- (void)addArrangedSubview:(NSView*)view;
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index;
- (void)removeArrangedSubview:(NSView*)view;
- (void)setHuggingPriority:(NSLayoutPriority)priority
            forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setViews:(NSArray<NSView*>*)views inGravity:(NSStackViewGravity)gravity;
- (NSSize)sizeForWidth:(CGFloat)width;
- (void)arrange;
@end

@interface NSView (MacOnLinux)
@property(readonly) NSLayoutDimension* widthAnchor;
@property(readonly) NSLayoutDimension* heightAnchor;
@property(readonly) NSLayoutYAxisAnchor* topAnchor;
@property(readonly) NSLayoutXAxisAnchor* leadingAnchor;
@property(copy) NSString* accessibilityLabel;
@property(copy) NSString* accessibilityHelp;
@property BOOL translatesAutoresizingMaskIntoConstraints;
@property(readonly) NSSize intrinsicContentSize;
@property(readonly) NSSize fittingSize;
- (void)layoutSubtreeIfNeeded;
- (void)setContentHuggingPriority:(NSLayoutPriority)priority
                   forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation;
@end

@interface NSApplication (MacOnLinux)
- (void)activate;
@end

@interface NSButton (MacOnLinux)
@property BOOL hasDestructiveAction;
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
@end

@interface NSTextField (MacOnLinux)
+ (instancetype)wrappingLabelWithString:(NSString*)text;
@end

@interface NSTextView (MacOnLinux)
+ (NSScrollView*)scrollableTextView;
@end

@interface NSFont (MacOnLinux)
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(CGFloat)weight;
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(CGFloat)weight;
@end

@interface NSColor (MacOnLinux)
@property(class, readonly) NSColor* separatorColor;
@property(class, readonly) NSColor* controlAccentColor;
@end

@interface NSImage (MacOnLinux)
+ (NSImage*)imageWithSystemSymbolName:(NSString*)name
             accessibilityDescription:(NSString*)description;
@end

@interface NSImageView (MacOnLinux)
@property(copy) NSColor* contentTintColor;
@end

@interface NSScreen (MacOnLinux)
@property(class, readonly) NSArray<NSScreen*>* screens;
@property(readonly) NSEdgeInsets safeAreaInsets;
@property(readonly) NSRect auxiliaryTopLeftArea;
@property(readonly) NSRect auxiliaryTopRightArea;
@end

@interface NSWindow (MacOnLinux)
@property NSWindowAnimationBehavior animationBehavior;
@property(getter=isMovable) BOOL movable;
@property BOOL canBecomeVisibleWithoutLogin;
@end

#ifdef __cplusplus
extern "C" {
#endif
int CGShieldingWindowLevel(void);
#ifdef __cplusplus
}
#endif
