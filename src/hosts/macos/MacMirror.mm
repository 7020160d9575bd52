#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>
#include <CoreFoundation/CoreFoundation.h>

#include <vector>

#include "hosts/macos/MacMirror.h"
#include "hosts/macos/MacRenderer.h"
#include "hosts/macos/MacStrings.h"
#include "hosts/macos/MacViews.h"
#include "platform/Platform.h"
#include "taskpane/TaskpaneView.h"
#include "ui/HostingView.h"

using velmora::hosts::macos::nsRectFrom;

namespace {

NSColor* colorFrom(const velmora::ui::Color& color) {
    return [NSColor colorWithSRGBRed:color.red green:color.green blue:color.blue alpha:color.alpha];
}

}  // namespace

// A plain mirror: a container of its library view's subviews.
@interface VLMirrorView : NSView
- (instancetype)initWithMirrored:(std::shared_ptr<velmora::platform::View>)view;
- (std::shared_ptr<velmora::platform::View>)mirrored;
// Brings the mirror's own look in line with its view; subclasses add theirs.
- (void)syncLook;
@end

@implementation VLMirrorView {
    std::shared_ptr<velmora::platform::View> _mirrored;
}

- (instancetype)initWithMirrored:(std::shared_ptr<velmora::platform::View>)view {
    self = [super initWithFrame:nsRectFrom(view->frame())];
    if (self) _mirrored = std::move(view);
    return self;
}

- (std::shared_ptr<velmora::platform::View>)mirrored {
    return _mirrored;
}

- (BOOL)isFlipped {
    return YES;
}

- (void)syncLook {
    auto* part = dynamic_cast<velmora::TaskpaneViewPart*>(_mirrored.get());
    if (!part) return;
    if (part->layer) {
        [self setWantsLayer:YES];
        if (part->layerBackground) {
            self.layer.backgroundColor = [colorFrom(part->layerBackground->resolve()) CGColor];
        } else if (part->layer->backgroundColor) {
            self.layer.backgroundColor = [colorFrom(*part->layer->backgroundColor) CGColor];
        }
        self.layer.zPosition = part->layer->zPosition;
    }
    if (part->isAccessibilityElement) {
        [self setAccessibilityElement:YES];
        [self setAccessibilityLabel:velmora::hosts::macos::toNSString(part->accessibilityLabel)];
    }
    // The title bar's label is a host text field: it takes the part's font and colour.
    for (const auto& child : part->subviews()) {
        auto* host = dynamic_cast<velmora::hosts::macos::MacHostView*>(child.get());
        if (!host || ![host->nsView() isKindOfClass:[NSTextField class]]) continue;
        NSTextField* label = (NSTextField*)host->nsView();
        if (part->font) {
            label.font = velmora::hosts::macos::fontFrom(*part->font);
        }
        if (part->textColor) label.textColor = colorFrom(part->textColor->resolve());
    }
}

@end

// The pane's close button: a push button filling the mirror.
@interface VLButtonMirror : VLMirrorView
@end

@implementation VLButtonMirror {
    NSButton* _button;
}

- (instancetype)initWithMirrored:(std::shared_ptr<velmora::platform::View>)view {
    self = [super initWithMirrored:std::move(view)];
    if (self) {
        _button = [NSButton buttonWithTitle:@"" target:self action:@selector(press:)];
        _button.frame = self.bounds;
        _button.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
        [self addSubview:_button];
    }
    return self;
}

- (void)syncLook {
    auto* button = dynamic_cast<velmora::TaskpaneButton*>(self.mirrored.get());
    if (!button) return;
    _button.title = velmora::hosts::macos::toNSString(button->title);
    _button.bezelStyle = static_cast<NSBezelStyle>(button->bezelStyle);
}

- (void)press:(id)sender {
    (void)sender;
    auto view = self.mirrored;  // the click may close the pane and drop the mirror
    auto* button = dynamic_cast<velmora::TaskpaneButton*>(view.get());
    if (button) velmora::platform::guarded("close button", [&] { button->performClick(); });
    velmora::hosts::macos::syncMirrors();
}

@end

// The resize handle: the mouse drags the pane's width, the open hand shows
// over it and the closed hand while it is held.
@interface VLHandleMirror : VLMirrorView
@end

@implementation VLHandleMirror

- (velmora::TaskpaneResizeHandle*)handle {
    return dynamic_cast<velmora::TaskpaneResizeHandle*>(self.mirrored.get());
}

- (velmora::Point)pointOf:(NSEvent*)event {
    const NSPoint location = [event locationInWindow];
    return {location.x, location.y};
}

- (void)mouseDown:(NSEvent*)event {
    if (auto* handle = [self handle]) {
        velmora::platform::guarded("resize handle", [&] { handle->mouseDown([self pointOf:event]); });
        [[NSCursor closedHandCursor] push];
    }
}

- (void)mouseDragged:(NSEvent*)event {
    if (auto* handle = [self handle]) {
        velmora::platform::guarded("resize handle", [&] { handle->mouseDragged([self pointOf:event]); });
        velmora::hosts::macos::syncMirrors();
    }
}

- (void)mouseUp:(NSEvent*)event {
    (void)event;
    if (auto* handle = [self handle]) {
        velmora::platform::guarded("resize handle", [&] { handle->mouseUp(); });
        [NSCursor pop];
    }
}

- (void)resetCursorRects {
    auto* handle = [self handle];
    if (!handle) return;
    handle->cursorRects.clear();
    handle->resetCursorRects();
    for (const auto& rect : handle->cursorRects) {
        [self addCursorRect:nsRectFrom(rect.rect) cursor:[NSCursor openHandCursor]];
    }
}

@end

// A hosting view: its node tree, drawn by the renderer, rebuilt when the
// library rebuilt it.
@interface VLHostingMirror : VLMirrorView
@end

@implementation VLHostingMirror {
    int _shownUpdates;
    NSSize _shownSize;
}

- (instancetype)initWithMirrored:(std::shared_ptr<velmora::platform::View>)view {
    self = [super initWithMirrored:std::move(view)];
    if (self) _shownUpdates = -1;
    return self;
}

- (void)syncLook {
    auto* hosting = dynamic_cast<velmora::ui::HostingView*>(self.mirrored.get());
    if (!hosting) return;
    const velmora::ui::Node& tree = hosting->tree();
    if (hosting->updates() == _shownUpdates && NSEqualSizes(self.bounds.size, _shownSize)) return;
    _shownUpdates = hosting->updates();
    _shownSize = self.bounds.size;
    velmora::hosts::macos::renderTree(self, tree);
}

@end

namespace velmora::hosts::macos {

namespace {

NSMapTable<NSValue*, VLMirrorView*>* mirrorTable() {
    static NSMapTable<NSValue*, VLMirrorView*>* table = [NSMapTable strongToWeakObjectsMapTable];
    return table;
}

NSValue* keyOf(const platform::View* view) { return [NSValue valueWithPointer:view]; }

VLMirrorView* makeMirror(const std::shared_ptr<platform::View>& view) {
    if (dynamic_cast<TaskpaneButton*>(view.get())) return [[VLButtonMirror alloc] initWithMirrored:view];
    if (dynamic_cast<TaskpaneResizeHandle*>(view.get())) return [[VLHandleMirror alloc] initWithMirrored:view];
    if (dynamic_cast<ui::HostingView*>(view.get())) return [[VLHostingMirror alloc] initWithMirrored:view];
    return [[VLMirrorView alloc] initWithMirrored:view];
}

// The subviews of `mirror` made to match `wanted`, in order, moving as
// little as it can: a view already in place stays.
void arrangeSubviews(NSView* mirror, NSArray<NSView*>* wanted) {
    if ([[mirror subviews] isEqualToArray:wanted]) return;
    for (NSView* subview in [[mirror subviews] copy]) {
        if (![wanted containsObject:subview]) [subview removeFromSuperview];
    }
    NSView* previous = nil;
    for (NSView* view in wanted) {
        if ([view superview] != mirror) {
            [mirror addSubview:view positioned:NSWindowAbove relativeTo:previous];
        } else {
            NSArray<NSView*>* current = [mirror subviews];
            const NSUInteger at = [current indexOfObject:view];
            const NSUInteger expected = previous ? [current indexOfObject:previous] + 1 : 0;
            if (at != expected) {
                [view removeFromSuperview];
                [mirror addSubview:view positioned:NSWindowAbove relativeTo:previous];
            }
        }
        previous = view;
    }
}

void syncTree(VLMirrorView* mirror) {
    auto view = [mirror mirrored];
    const NSRect frame = nsRectFrom(view->frame());
    if (!NSEqualRects([mirror frame], frame)) [mirror setFrame:frame];
    [mirror syncLook];
    if ([mirror isKindOfClass:[VLHostingMirror class]]) return;  // its subviews are the renderer's

    NSMutableArray<NSView*>* wanted = [NSMutableArray array];
    for (const auto& child : view->subviews()) {
        if (NSView* shown = nsViewFor(child)) [wanted addObject:shown];
    }
    if (auto* button = dynamic_cast<TaskpaneButton*>(view.get())) {
        (void)button;  // its push button is its only subview
        return;
    }
    arrangeSubviews(mirror, wanted);
    for (NSView* child in wanted) {
        if ([child isKindOfClass:[VLMirrorView class]]) syncTree((VLMirrorView*)child);
    }
}

// A root mirror: one in a host view or a window. One in a host view stays
// there while its library view's parent is that view's wrapper, and follows
// it otherwise; its height and place are the host's (a split view arranges
// its panes), its width the library's.
void syncRoot(VLMirrorView* mirror) {
    auto view = [mirror mirrored];
    NSView* hostParent = [mirror superview];
    const bool inWindowFrame = hostParent && [hostParent window] && [[hostParent window] contentView] == mirror;
    if (hostParent && !inWindowFrame) {
        auto parent = view->superview();
        auto* wrapper = dynamic_cast<MacHostView*>(parent.get());
        if (!wrapper) {
            [mirror removeFromSuperview];
            return;
        }
        if (wrapper->nsView() != hostParent) {
            [mirror removeFromSuperview];
            if (NSView* moved = wrapper->nsView()) [moved addSubview:mirror];
        }
        const NSRect shown = [mirror frame];
        const platform::Rect wanted = view->frame();
        if (shown.origin.x != wanted.x || shown.origin.y != wanted.y || shown.size.height != wanted.height) {
            view->setFrame({shown.origin.x, shown.origin.y, wanted.width, shown.size.height});
        }
    }
    syncTree(mirror);
}

}  // namespace

NSView* mirrorFor(const std::shared_ptr<platform::View>& view) {
    if (!view) return nil;
    NSValue* key = keyOf(view.get());
    if (VLMirrorView* existing = [mirrorTable() objectForKey:key]) return existing;
    VLMirrorView* mirror = makeMirror(view);
    [mirrorTable() setObject:mirror forKey:key];
    startMirroring();
    syncTree(mirror);
    return mirror;
}

std::shared_ptr<platform::View> mirroredView(NSView* view) {
    if (![view isKindOfClass:[VLMirrorView class]]) return nullptr;
    return [(VLMirrorView*)view mirrored];
}

void syncMirrors() {
    platform::guarded("mirrors", [] {
        NSArray<VLMirrorView*>* mirrors = [[mirrorTable() objectEnumerator] allObjects];
        for (VLMirrorView* mirror in mirrors) {
            if (![[mirror superview] isKindOfClass:[VLMirrorView class]]) syncRoot(mirror);
        }
        MacHostView::releaseIdleParents();
    });
}

void startMirroring() {
    static bool started = false;
    if (started) return;
    started = true;
    CFRunLoopObserverRef observer = CFRunLoopObserverCreateWithHandler(
        kCFAllocatorDefault, kCFRunLoopBeforeWaiting, true, 0,
        ^(CFRunLoopObserverRef, CFRunLoopActivity) {
          syncMirrors();
        });
    CFRunLoopAddObserver(CFRunLoopGetMain(), observer, kCFRunLoopCommonModes);
}

}  // namespace velmora::hosts::macos
