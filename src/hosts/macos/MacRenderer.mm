#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>
#import <WebKit/WebKit.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "hosts/macos/MacRenderer.h"
#include "hosts/macos/MacStrings.h"
#include "hosts/macos/MacWeb.h"
#include "platform/Platform.h"

using velmora::hosts::macos::toNSString;
using velmora::hosts::macos::toStdString;
namespace ui = velmora::ui;

namespace {

// What descendants inherit: the font and the foreground colour.
struct Environment {
    ui::Font font;
    ui::Color foreground = ui::colors::black;
};

NSLayoutConstraint* pin(id item, NSLayoutAttribute attribute, NSLayoutRelation relation, id other,
                        NSLayoutAttribute otherAttribute, CGFloat constant, NSLayoutPriority priority = 1000) {
    NSLayoutConstraint* constraint = [NSLayoutConstraint constraintWithItem:item
                                                                  attribute:attribute
                                                                  relatedBy:relation
                                                                     toItem:other
                                                                  attribute:otherAttribute
                                                                 multiplier:1
                                                                   constant:constant];
    constraint.priority = priority;
    return constraint;
}

NSLayoutConstraint* size(id item, NSLayoutAttribute attribute, NSLayoutRelation relation, CGFloat constant,
                         NSLayoutPriority priority = 1000) {
    return pin(item, attribute, relation, nil, NSLayoutAttributeNotAnAttribute, constant, priority);
}

void run(const char* where, const std::function<void()>& closure) {
    if (closure) velmora::platform::guarded(where, closure);
}

NSString* dayText(NSDate* date) {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = @"yyyy-MM-dd";
    formatter.calendar = [NSCalendar currentCalendar];
    return [formatter stringFromDate:date];
}

NSDate* dayFrom(const std::string& text) {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = @"yyyy-MM-dd";
    formatter.calendar = [NSCalendar currentCalendar];
    return [formatter dateFromString:toNSString(text)];
}

}  // namespace

// --- shapes -------------------------------------------------------------------------

// A shape drawn in its bounds: filled with its colour, or stroked.
@interface VLShapeView : NSView
- (void)setShape:(const ui::Node&)node color:(ui::Color)color;
@end

@implementation VLShapeView {
    ui::Node _shape;
    ui::Color _color;
}

- (BOOL)isFlipped {
    return YES;
}

- (void)setShape:(const ui::Node&)node color:(ui::Color)color {
    _shape = node;
    _shape.children.clear();
    _color = color;
    [self setNeedsDisplay:YES];
}

- (NSBezierPath*)outline {
    const NSRect box = self.bounds;
    switch (_shape.kind) {
        case ui::Kind::rectangle: return [NSBezierPath bezierPathWithRect:box];
        case ui::Kind::roundedRectangle:
            return [NSBezierPath bezierPathWithRoundedRect:box
                                                   xRadius:_shape.shapeCornerRadius
                                                   yRadius:_shape.shapeCornerRadius];
        case ui::Kind::circle: {
            const CGFloat side = std::min(box.size.width, box.size.height);
            return [NSBezierPath bezierPathWithOvalInRect:NSMakeRect(NSMidX(box) - side / 2, NSMidY(box) - side / 2,
                                                                     side, side)];
        }
        case ui::Kind::capsule: {
            const CGFloat radius = std::min(box.size.width, box.size.height) / 2;
            return [NSBezierPath bezierPathWithRoundedRect:box xRadius:radius yRadius:radius];
        }
        case ui::Kind::line: {
            NSPoint from = NSMakePoint(box.size.width * _shape.lineFrom.x, box.size.height * _shape.lineFrom.y);
            NSPoint to = NSMakePoint(box.size.width * _shape.lineTo.x, box.size.height * _shape.lineTo.y);
            const CGFloat length = std::hypot(to.x - from.x, to.y - from.y);
            if (length > 0 && _shape.lineInset > 0) {
                const CGFloat dx = (to.x - from.x) / length * _shape.lineInset;
                const CGFloat dy = (to.y - from.y) / length * _shape.lineInset;
                from = NSMakePoint(from.x + dx, from.y + dy);
                to = NSMakePoint(to.x - dx, to.y - dy);
            }
            NSBezierPath* path = [NSBezierPath bezierPath];
            [path moveToPoint:from];
            [path lineToPoint:to];
            return path;
        }
        case ui::Kind::path: {
            NSBezierPath* path = [NSBezierPath bezierPath];
            const CGFloat sx = _shape.pathWidth > 0 ? box.size.width / _shape.pathWidth : 1;
            const CGFloat sy = _shape.pathHeight > 0 ? box.size.height / _shape.pathHeight : 1;
            for (const auto& step : _shape.pathElements) {
                const NSRect rect = NSMakeRect(step.x * sx, step.y * sy, step.width * sx, step.height * sy);
                switch (step.kind) {
                    case ui::PathElement::Kind::move: [path moveToPoint:rect.origin]; break;
                    case ui::PathElement::Kind::line: [path lineToPoint:rect.origin]; break;
                    case ui::PathElement::Kind::close: [path closePath]; break;
                    case ui::PathElement::Kind::rect: [path appendBezierPathWithRect:rect]; break;
                    case ui::PathElement::Kind::ellipse: [path appendBezierPathWithOvalInRect:rect]; break;
                }
            }
            return path;
        }
        default: return [NSBezierPath bezierPathWithRect:box];
    }
}

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    if (_shape.kind == ui::Kind::checkerboard) {
        [[NSColor whiteColor] setFill];
        NSRectFill(self.bounds);
        const double tile = _shape.tile > 0 ? _shape.tile : 8;
        [[NSColor colorWithSRGBRed:0.85 green:0.85 blue:0.85 alpha:1] setFill];
        const int columns = static_cast<int>(std::ceil(self.bounds.size.width / tile));
        const int rows = static_cast<int>(std::ceil(self.bounds.size.height / tile));
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                if ((row + column) % 2 == 0) NSRectFill(NSMakeRect(column * tile, row * tile, tile, tile));
            }
        }
        return;
    }
    NSBezierPath* path = [self outline];
    if (_shape.strokeStyle) {
        [velmora::hosts::macos::colorFrom(_shape.strokeStyle->color) setStroke];
        path.lineWidth = _shape.strokeStyle->width;
        switch (_shape.strokeStyle->cap) {
            case ui::LineCap::butt: path.lineCapStyle = NSLineCapStyleButt; break;
            case ui::LineCap::round: path.lineCapStyle = NSLineCapStyleRound; break;
            case ui::LineCap::square: path.lineCapStyle = NSLineCapStyleSquare; break;
        }
        [path stroke];
    } else {
        [velmora::hosts::macos::colorFrom(_color) setFill];
        [path fill];
    }
}

@end

// --- nodes --------------------------------------------------------------------------

// One node: a flipped container that carries the node's modifiers around
// the view of its kind, and the node's closures.
@interface VLNodeView : NSView <NSTextFieldDelegate>
@end

@implementation VLNodeView {
@public
    ui::Kind _kind;
    NSView* _content;
    NSMutableArray<NSLayoutConstraint*>* _own;
    NSMutableArray<VLNodeView*>* _children;
    std::function<void()> _action;
    std::function<void(const std::string&)> _onEdit;
    std::function<void(bool)> _onHover;
    std::function<void()> _onSubmit;
    std::function<void(double)> _onScroll;
    std::vector<std::function<void()>> _itemActions;
    NSTrackingArea* _tracking;
    NSPopover* _popover;
    bool _clickable;
}

- (BOOL)isFlipped {
    return YES;
}

- (void)act:(id)sender {
    (void)sender;
    run("tap", _action);
}

- (void)pickItem:(id)sender {
    NSInteger index = -1;
    if ([sender isKindOfClass:[NSSegmentedControl class]]) {
        index = [(NSSegmentedControl*)sender selectedSegment];
    } else if ([sender isKindOfClass:[NSPopUpButton class]]) {
        index = [(NSPopUpButton*)sender indexOfSelectedItem];
        if ([(NSPopUpButton*)sender pullsDown]) index -= 1;  // a pull-down's first item is its title
    }
    if (index >= 0 && static_cast<std::size_t>(index) < _itemActions.size()) run("pick", _itemActions[index]);
}

- (void)pickDate:(id)sender {
    NSString* day = dayText([(NSDatePicker*)sender dateValue]);
    auto onEdit = _onEdit;
    if (onEdit) velmora::platform::guarded("pick", [&] { onEdit(toStdString(day)); });
}

- (void)controlTextDidChange:(NSNotification*)notification {
    NSTextField* field = [notification object];
    auto onEdit = _onEdit;
    if (onEdit) velmora::platform::guarded("type", [&] { onEdit(toStdString([field stringValue])); });
}

- (void)submit:(id)sender {
    (void)sender;
    run("submit", _onSubmit);
}

- (void)scrolled:(NSNotification*)notification {
    NSClipView* clip = [notification object];
    auto onScroll = _onScroll;
    const double offset = clip.bounds.origin.y;
    if (onScroll) velmora::platform::guarded("scroll", [&] { onScroll(offset); });
}

- (void)updateTrackingAreas {
    [super updateTrackingAreas];
    if (_tracking) [self removeTrackingArea:_tracking];
    _tracking = nil;
    if (!_onHover) return;
    _tracking = [[NSTrackingArea alloc] initWithRect:self.bounds
                                             options:NSTrackingMouseEnteredAndExited | NSTrackingActiveInActiveApp |
                                                     NSTrackingInVisibleRect
                                               owner:self
                                            userInfo:nil];
    [self addTrackingArea:_tracking];
}

- (void)mouseEntered:(NSEvent*)event {
    (void)event;
    auto onHover = _onHover;
    if (onHover) velmora::platform::guarded("hover", [&] { onHover(true); });
}

- (void)mouseExited:(NSEvent*)event {
    (void)event;
    auto onHover = _onHover;
    if (onHover) velmora::platform::guarded("hover", [&] { onHover(false); });
}

// A button whose label is content takes the click itself.
- (void)mouseUp:(NSEvent*)event {
    if (!_clickable) {
        [super mouseUp:event];
        return;
    }
    if (NSPointInRect([self convertPoint:[event locationInWindow] fromView:nil], self.bounds)) run("tap", _action);
}

- (NSView*)hitTest:(NSPoint)point {
    NSView* hit = [super hitTest:point];
    // The label content of a clickable button does not take the click from it.
    if (_clickable && hit && [hit isDescendantOf:self]) return self;
    return hit;
}

@end

namespace velmora::hosts::macos {

namespace {

VLNodeView* build(VLNodeView* reuse, const ui::Node& node, const Environment& inherited);

NSView* contentFor(const ui::Node& node) {
    switch (node.kind) {
        case ui::Kind::vstack:
        case ui::Kind::hstack: return [[NSStackView alloc] initWithFrame:NSZeroRect];
        case ui::Kind::grid: return [[NSGridView alloc] initWithFrame:NSZeroRect];
        case ui::Kind::scroll: {
            NSScrollView* scroll = [[NSScrollView alloc] initWithFrame:NSZeroRect];
            scroll.drawsBackground = NO;
            return scroll;
        }
        case ui::Kind::text: return [NSTextField wrappingLabelWithString:@""];
        case ui::Kind::image:
        case ui::Kind::symbol: return [[NSImageView alloc] initWithFrame:NSZeroRect];
        case ui::Kind::divider: {
            NSBox* line = [[NSBox alloc] initWithFrame:NSZeroRect];
            line.boxType = NSBoxSeparator;
            return line;
        }
        case ui::Kind::button: return node.text.empty() ? [[NSView alloc] initWithFrame:NSZeroRect]
                                                        : [NSButton buttonWithTitle:@"" target:nil action:nil];
        case ui::Kind::toggle: return [NSButton checkboxWithTitle:@"" target:nil action:nil];
        case ui::Kind::textField: return [NSTextField textFieldWithString:@""];
        case ui::Kind::picker:
            return node.segmented ? (NSView*)[[NSSegmentedControl alloc] initWithFrame:NSZeroRect]
                                  : (NSView*)[[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
        case ui::Kind::menu: return [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:YES];
        case ui::Kind::datePicker: {
            NSDatePicker* picker = [[NSDatePicker alloc] initWithFrame:NSZeroRect];
            picker.datePickerStyle = NSDatePickerStyleClockAndCalendar;
            picker.datePickerElements = NSDatePickerElementFlagYearMonthDay;
            return picker;
        }
        case ui::Kind::rectangle:
        case ui::Kind::roundedRectangle:
        case ui::Kind::circle:
        case ui::Kind::capsule:
        case ui::Kind::line:
        case ui::Kind::checkerboard:
        case ui::Kind::path: return [[VLShapeView alloc] initWithFrame:NSZeroRect];
        case ui::Kind::zstack:
        case ui::Kind::popover:
        case ui::Kind::spacer:
        case ui::Kind::webView: return [[NSView alloc] initWithFrame:NSZeroRect];
    }
    return [[NSView alloc] initWithFrame:NSZeroRect];
}

NSImage* imageFrom(const ui::Node& node) {
    if (node.kind == ui::Kind::symbol) return [NSImage imageWithSystemSymbolName:toNSString(node.text) accessibilityDescription:nil];
    std::string error;
    if (auto bytes = platform::files().read(node.text, &error)) {
        if (NSImage* image = [[NSImage alloc] initWithData:toNSData(*bytes)]) return image;
    }
    if (node.placeholder.empty()) return nil;
    return [NSImage imageWithSystemSymbolName:toNSString(node.placeholder) accessibilityDescription:nil];
}

// The children of a container, each built anew or updated in place.
NSArray<VLNodeView*>* buildChildren(VLNodeView* view, const std::vector<ui::Node>& nodes, const Environment& env) {
    NSMutableArray<VLNodeView*>* built = [NSMutableArray arrayWithCapacity:nodes.size()];
    NSArray<VLNodeView*>* before = view->_children ?: @[];
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        VLNodeView* reuse = i < before.count ? before[i] : nil;
        [built addObject:build(reuse, nodes[i], env)];
    }
    view->_children = built;
    return built;
}

void fillWith(NSView* container, NSView* child, std::vector<NSLayoutConstraint*>& into) {
    child.translatesAutoresizingMaskIntoConstraints = NO;
    if ([child superview] != container) [container addSubview:child];
    into.push_back(pin(child, NSLayoutAttributeLeading, NSLayoutRelationEqual, container, NSLayoutAttributeLeading, 0));
    into.push_back(pin(child, NSLayoutAttributeTrailing, NSLayoutRelationEqual, container, NSLayoutAttributeTrailing, 0));
    into.push_back(pin(child, NSLayoutAttributeTop, NSLayoutRelationEqual, container, NSLayoutAttributeTop, 0));
    into.push_back(pin(child, NSLayoutAttributeBottom, NSLayoutRelationEqual, container, NSLayoutAttributeBottom, 0));
}

// Places `child` in `container` by an alignment: at most the container's
// size, and the container at least the child's.
void align(NSView* container, NSView* child, ui::Alignment alignment, std::vector<NSLayoutConstraint*>& into) {
    child.translatesAutoresizingMaskIntoConstraints = NO;
    const bool leading = alignment == ui::Alignment::leading || alignment == ui::Alignment::topLeading ||
                         alignment == ui::Alignment::bottomLeading;
    const bool trailing = alignment == ui::Alignment::trailing || alignment == ui::Alignment::topTrailing ||
                          alignment == ui::Alignment::bottomTrailing;
    const bool top = alignment == ui::Alignment::top || alignment == ui::Alignment::topLeading ||
                     alignment == ui::Alignment::topTrailing;
    const bool bottom = alignment == ui::Alignment::bottom || alignment == ui::Alignment::bottomLeading ||
                        alignment == ui::Alignment::bottomTrailing;
    into.push_back(pin(child, leading ? NSLayoutAttributeLeading : trailing ? NSLayoutAttributeTrailing : NSLayoutAttributeCenterX,
                       NSLayoutRelationEqual, container,
                       leading ? NSLayoutAttributeLeading : trailing ? NSLayoutAttributeTrailing : NSLayoutAttributeCenterX, 0));
    into.push_back(pin(child, top ? NSLayoutAttributeTop : bottom ? NSLayoutAttributeBottom : NSLayoutAttributeCenterY,
                       NSLayoutRelationEqual, container,
                       top ? NSLayoutAttributeTop : bottom ? NSLayoutAttributeBottom : NSLayoutAttributeCenterY, 0));
    into.push_back(pin(child, NSLayoutAttributeWidth, NSLayoutRelationLessThanOrEqual, container, NSLayoutAttributeWidth, 0));
    into.push_back(pin(child, NSLayoutAttributeHeight, NSLayoutRelationLessThanOrEqual, container, NSLayoutAttributeHeight, 0));
    // Content that can grow fills the room (a shape, a spacer); the rest keeps its size.
    into.push_back(pin(child, NSLayoutAttributeWidth, NSLayoutRelationEqual, container, NSLayoutAttributeWidth, 0, 1));
    into.push_back(pin(child, NSLayoutAttributeHeight, NSLayoutRelationEqual, container, NSLayoutAttributeHeight, 0, 1));
}

void configureContent(VLNodeView* view, const ui::Node& node, const Environment& env,
                      std::vector<NSLayoutConstraint*>& constraints) {
    NSView* content = view->_content;
    switch (node.kind) {
        case ui::Kind::vstack:
        case ui::Kind::hstack: {
            NSStackView* stack = (NSStackView*)content;
            const bool vertical = node.kind == ui::Kind::vstack;
            stack.orientation = vertical ? NSUserInterfaceLayoutOrientationVertical
                                         : NSUserInterfaceLayoutOrientationHorizontal;
            stack.spacing = node.spacing.value_or(8);
            stack.distribution = NSStackViewDistributionFill;
            switch (node.alignment) {
                case ui::Alignment::leading: stack.alignment = NSLayoutAttributeLeading; break;
                case ui::Alignment::trailing: stack.alignment = NSLayoutAttributeTrailing; break;
                case ui::Alignment::top: stack.alignment = NSLayoutAttributeTop; break;
                case ui::Alignment::bottom: stack.alignment = NSLayoutAttributeBottom; break;
                default: stack.alignment = vertical ? NSLayoutAttributeCenterX : NSLayoutAttributeCenterY; break;
            }
            NSArray<VLNodeView*>* children = buildChildren(view, node.children, env);
            if (![stack.arrangedSubviews isEqualToArray:children]) {
                for (NSView* old in [stack.arrangedSubviews copy]) {
                    [stack removeArrangedSubview:old];
                    if (![children containsObject:(VLNodeView*)old]) [old removeFromSuperview];
                }
                for (VLNodeView* child in children) [stack addArrangedSubview:child];
            }
            break;
        }
        case ui::Kind::zstack:
        case ui::Kind::popover: {
            const std::vector<ui::Node> layers =
                node.kind == ui::Kind::popover && !node.children.empty() ? std::vector<ui::Node>{node.children[0]}
                                                                         : node.children;
            NSArray<VLNodeView*>* children = buildChildren(view, layers, env);
            for (NSView* old in [[content subviews] copy]) {
                if (![children containsObject:(VLNodeView*)old]) [old removeFromSuperview];
            }
            for (VLNodeView* child in children) {
                if ([child superview] != content) [content addSubview:child];
                align(content, child, node.alignment, constraints);
            }
            if (node.kind == ui::Kind::popover && node.children.size() > 1) {
                if (node.isOn && !view->_popover.shown) {
                    NSViewController* controller = [[NSViewController alloc] init];
                    controller.view = build(nil, node.children[1], env);
                    view->_popover = [[NSPopover alloc] init];
                    view->_popover.contentViewController = controller;
                    view->_popover.behavior = NSPopoverBehaviorTransient;
                    [view->_popover showRelativeToRect:content.bounds ofView:content preferredEdge:NSRectEdgeMaxY];
                } else if (!node.isOn && view->_popover.shown) {
                    [view->_popover close];
                }
            }
            break;
        }
        case ui::Kind::scroll: {
            NSScrollView* scroll = (NSScrollView*)content;
            const bool vertical = node.axis == ui::Axis::vertical;
            scroll.hasVerticalScroller = vertical;
            scroll.hasHorizontalScroller = !vertical;
            NSArray<VLNodeView*>* children = buildChildren(view, node.children, env);
            VLNodeView* document = children.firstObject;
            if (document && scroll.documentView != document) scroll.documentView = document;
            if (document) {
                document.translatesAutoresizingMaskIntoConstraints = NO;
                NSClipView* clip = scroll.contentView;
                constraints.push_back(pin(document, NSLayoutAttributeLeading, NSLayoutRelationEqual, clip, NSLayoutAttributeLeading, 0));
                constraints.push_back(pin(document, NSLayoutAttributeTop, NSLayoutRelationEqual, clip, NSLayoutAttributeTop, 0));
                constraints.push_back(pin(document, vertical ? NSLayoutAttributeWidth : NSLayoutAttributeHeight,
                                          NSLayoutRelationEqual, clip,
                                          vertical ? NSLayoutAttributeWidth : NSLayoutAttributeHeight, 0));
            }
            [[NSNotificationCenter defaultCenter] removeObserver:view name:NSViewBoundsDidChangeNotification object:nil];
            if (node.onScroll) {
                scroll.contentView.postsBoundsChangedNotifications = YES;
                [[NSNotificationCenter defaultCenter] addObserver:view
                                                         selector:@selector(scrolled:)
                                                             name:NSViewBoundsDidChangeNotification
                                                           object:scroll.contentView];
            }
            break;
        }
        case ui::Kind::grid: {
            NSGridView* grid = (NSGridView*)content;
            NSArray<VLNodeView*>* children = buildChildren(view, node.children, env);
            while (grid.numberOfRows > 0) [grid removeRowAtIndex:grid.numberOfRows - 1];
            const NSUInteger columns = static_cast<NSUInteger>(std::max(1, node.columns));
            for (NSUInteger start = 0; start < children.count; start += columns) {
                NSMutableArray<NSView*>* row = [NSMutableArray array];
                for (NSUInteger i = start; i < std::min<NSUInteger>(start + columns, children.count); ++i) {
                    [row addObject:children[i]];
                }
                [grid addRowWithViews:row];
            }
            grid.rowSpacing = node.spacing.value_or(8);
            grid.columnSpacing = node.spacing.value_or(8);
            break;
        }
        case ui::Kind::text: {
            NSTextField* label = (NSTextField*)content;
            label.stringValue = toNSString(node.text);
            label.font = fontFrom(env.font);
            label.textColor = colorFrom(env.foreground);
            label.maximumNumberOfLines = node.mod.lineLimit.value_or(0);
            if (node.mod.fixedSize) {
                label.lineBreakMode = NSLineBreakByClipping;
                [label setContentCompressionResistancePriority:1000 forOrientation:NSLayoutConstraintOrientationHorizontal];
            } else {
                label.lineBreakMode = NSLineBreakByWordWrapping;
                label.preferredMaxLayoutWidth = 0;
                [label setContentCompressionResistancePriority:250 forOrientation:NSLayoutConstraintOrientationHorizontal];
            }
            break;
        }
        case ui::Kind::image:
        case ui::Kind::symbol: {
            NSImageView* image = (NSImageView*)content;
            image.image = imageFrom(node);
            image.contentTintColor = node.kind == ui::Kind::symbol ? colorFrom(env.foreground) : nil;
            if (node.kind == ui::Kind::symbol) {
                image.symbolConfiguration = [NSImageSymbolConfiguration configurationWithPointSize:env.font.size
                                                                                            weight:NSFontWeightRegular];
            }
            image.imageScaling = node.resizable ? NSImageScaleProportionallyUpOrDown : NSImageScaleNone;
            if (node.resizable && !node.aspectFit) {
                image.wantsLayer = YES;
                image.layer.contentsGravity = kCAGravityResizeAspectFill;
                image.layer.masksToBounds = YES;
            }
            break;
        }
        case ui::Kind::button: {
            view->_action = node.action;
            if (!node.text.empty()) {
                NSButton* button = (NSButton*)content;
                button.title = toNSString(node.text);
                button.target = view;
                button.action = @selector(act:);
                button.keyEquivalent = node.isDefaultAction ? @"\r" : @"";
                button.font = fontFrom(env.font);
            } else {
                view->_clickable = true;
                NSArray<VLNodeView*>* children = buildChildren(view, node.children, env);
                for (NSView* old in [[content subviews] copy]) {
                    if (![children containsObject:(VLNodeView*)old]) [old removeFromSuperview];
                }
                for (VLNodeView* child in children) fillWith(content, child, constraints);
            }
            break;
        }
        case ui::Kind::toggle: {
            NSButton* box = (NSButton*)content;
            view->_action = node.action;
            box.title = toNSString(node.text);
            box.state = node.isOn ? NSControlStateValueOn : NSControlStateValueOff;
            box.target = view;
            box.action = @selector(act:);
            break;
        }
        case ui::Kind::textField: {
            NSTextField* field = (NSTextField*)content;
            view->_onEdit = node.onEdit;
            view->_onSubmit = node.onSubmit;
            // A field being edited keeps what the user typed and its caret.
            if (![[field stringValue] isEqualToString:toNSString(node.text)] && field.currentEditor == nil) {
                field.stringValue = toNSString(node.text);
            }
            field.placeholderString = toNSString(node.placeholder);
            field.font = fontFrom(env.font);
            field.delegate = view;
            field.target = view;
            field.action = @selector(submit:);
            break;
        }
        case ui::Kind::picker:
        case ui::Kind::menu: {
            view->_itemActions.clear();
            for (const auto& item : node.children) view->_itemActions.push_back(item.action);
            if ([content isKindOfClass:[NSSegmentedControl class]]) {
                NSSegmentedControl* segments = (NSSegmentedControl*)content;
                segments.segmentCount = static_cast<NSInteger>(node.children.size());
                for (std::size_t i = 0; i < node.children.size(); ++i) {
                    [segments setLabel:toNSString(node.children[i].text) forSegment:static_cast<NSInteger>(i)];
                    if (node.children[i].isOn) segments.selectedSegment = static_cast<NSInteger>(i);
                }
                segments.target = view;
                segments.action = @selector(pickItem:);
            } else {
                NSPopUpButton* popUp = (NSPopUpButton*)content;
                [popUp removeAllItems];
                if (node.kind == ui::Kind::menu) [popUp addItemWithTitle:toNSString(node.text)];
                for (std::size_t i = 0; i < node.children.size(); ++i) {
                    [popUp addItemWithTitle:toNSString(node.children[i].text)];
                    if (node.kind == ui::Kind::picker && node.children[i].isOn) {
                        [popUp selectItemAtIndex:static_cast<NSInteger>(i)];
                    }
                }
                popUp.target = view;
                popUp.action = @selector(pickItem:);
            }
            break;
        }
        case ui::Kind::datePicker: {
            NSDatePicker* picker = (NSDatePicker*)content;
            view->_onEdit = node.onEdit;
            if (NSDate* day = dayFrom(node.text)) picker.dateValue = day;
            picker.target = view;
            picker.action = @selector(pickDate:);
            break;
        }
        case ui::Kind::webView: {
            auto* web = dynamic_cast<MacWebView*>(node.webView.get());
            NSView* page = web ? web->webView() : nil;
            for (NSView* old in [[content subviews] copy]) {
                if (old != page) [old removeFromSuperview];
            }
            if (page) fillWith(content, page, constraints);
            break;
        }
        case ui::Kind::spacer: {
            // Gives way to everything else along its stack; at least its minimum length.
            [view setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
            [view setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationVertical];
            const double least = node.spacing.value_or(0);
            constraints.push_back(size(content, NSLayoutAttributeWidth, NSLayoutRelationGreaterThanOrEqual, least, 500));
            constraints.push_back(size(content, NSLayoutAttributeHeight, NSLayoutRelationGreaterThanOrEqual, least, 500));
            break;
        }
        case ui::Kind::divider: break;
        case ui::Kind::rectangle:
        case ui::Kind::roundedRectangle:
        case ui::Kind::circle:
        case ui::Kind::capsule:
        case ui::Kind::line:
        case ui::Kind::checkerboard:
        case ui::Kind::path: {
            // A shape takes the room it is offered.
            [(VLShapeView*)content setShape:node color:node.mod.foreground.value_or(env.foreground)];
            [view setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
            [view setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationVertical];
            break;
        }
    }
}

// The frame modifier as size constraints on the node's view.
void constrainFrame(NSView* view, const ui::Frame& frame, std::vector<NSLayoutConstraint*>& into) {
    auto bound = [&](NSLayoutAttribute attribute, const std::optional<double>& exact, const std::optional<double>& least,
                     const std::optional<double>& ideal, const std::optional<double>& most) {
        if (exact) into.push_back(size(view, attribute, NSLayoutRelationEqual, *exact));
        if (least) into.push_back(size(view, attribute, NSLayoutRelationGreaterThanOrEqual, *least));
        if (most && std::isfinite(*most)) into.push_back(size(view, attribute, NSLayoutRelationLessThanOrEqual, *most));
        if (ideal) into.push_back(size(view, attribute, NSLayoutRelationEqual, *ideal, 250));
        const auto orientation = attribute == NSLayoutAttributeWidth ? NSLayoutConstraintOrientationHorizontal
                                                                      : NSLayoutConstraintOrientationVertical;
        // An infinite maximum fills the room offered.
        if (most && !std::isfinite(*most)) [view setContentHuggingPriority:1 forOrientation:orientation];
    };
    bound(NSLayoutAttributeWidth, frame.width, frame.minWidth, frame.idealWidth, frame.maxWidth);
    bound(NSLayoutAttributeHeight, frame.height, frame.minHeight, frame.idealHeight, frame.maxHeight);
}

void applyLayer(NSView* view, const ui::Node::Modifiers& mod) {
    const bool needsLayer = mod.background || mod.border || mod.cornerRadius > 0 || mod.shadow || mod.scale != 1 ||
                            mod.rotation != 0 || mod.offsetX != 0 || mod.offsetY != 0;
    view.alphaValue = mod.opacity;
    if (!needsLayer && !view.wantsLayer) return;
    view.wantsLayer = YES;
    CALayer* layer = view.layer;
    layer.backgroundColor = mod.background ? [colorFrom(*mod.background) CGColor] : nil;
    layer.borderWidth = mod.border ? mod.border->width : 0;
    layer.borderColor = mod.border ? [colorFrom(mod.border->color) CGColor] : nil;
    layer.cornerRadius = mod.cornerRadius;
    layer.masksToBounds = mod.cornerRadius > 0 && !mod.shadow;
    if (mod.shadow) {
        layer.shadowColor = [colorFrom(mod.shadow->color) CGColor];
        layer.shadowOpacity = 1;
        layer.shadowRadius = mod.shadow->radius;
        layer.shadowOffset = CGSizeMake(mod.shadow->x, -mod.shadow->y);
    } else {
        layer.shadowOpacity = 0;
    }
    CGAffineTransform transform = CGAffineTransformMakeTranslation(mod.offsetX, mod.offsetY);
    transform = CGAffineTransformScale(transform, mod.scale, mod.scale);
    transform = CGAffineTransformRotate(transform, mod.rotation * M_PI / 180);
    layer.affineTransform = transform;
}

VLNodeView* build(VLNodeView* reuse, const ui::Node& node, const Environment& inherited) {
    VLNodeView* view = reuse && reuse->_kind == node.kind ? reuse : nil;
    if (!view) {
        view = [[VLNodeView alloc] initWithFrame:NSZeroRect];
        view->_kind = node.kind;
        view->_content = contentFor(node);
        view->_content.translatesAutoresizingMaskIntoConstraints = NO;
        [view addSubview:view->_content];
    }
    view.translatesAutoresizingMaskIntoConstraints = NO;
    // The platform's default give; a spacer, a shape or an unbounded frame lowers it below.
    [view setContentHuggingPriority:250 forOrientation:NSLayoutConstraintOrientationHorizontal];
    [view setContentHuggingPriority:250 forOrientation:NSLayoutConstraintOrientationVertical];
    Environment env = inherited;
    if (node.mod.font) env.font = *node.mod.font;
    if (node.mod.foreground) env.foreground = *node.mod.foreground;

    view->_action = nullptr;
    view->_onEdit = nullptr;
    view->_onSubmit = nullptr;
    view->_clickable = false;
    view->_onHover = node.onHover;
    view->_onScroll = node.onScroll;

    std::vector<NSLayoutConstraint*> constraints;
    configureContent(view, node, env, constraints);

    // Padding: the content inset from the node's edges; within a set frame,
    // placed by the frame's alignment.
    const auto& pad = node.mod.padding;
    NSView* content = view->_content;
    if (node.mod.frame.isSet()) {
        NSView* box = view;
        constraints.push_back(pin(content, NSLayoutAttributeLeading, NSLayoutRelationGreaterThanOrEqual, box, NSLayoutAttributeLeading, pad.leading));
        constraints.push_back(pin(box, NSLayoutAttributeTrailing, NSLayoutRelationGreaterThanOrEqual, content, NSLayoutAttributeTrailing, pad.trailing));
        constraints.push_back(pin(content, NSLayoutAttributeTop, NSLayoutRelationGreaterThanOrEqual, box, NSLayoutAttributeTop, pad.top));
        constraints.push_back(pin(box, NSLayoutAttributeBottom, NSLayoutRelationGreaterThanOrEqual, content, NSLayoutAttributeBottom, pad.bottom));
        std::vector<NSLayoutConstraint*> placed;
        align(box, content, node.mod.frame.alignment, placed);
        // align() places without insets; the inequalities above keep them.
        for (std::size_t i = 2; i < placed.size(); ++i) constraints.push_back(placed[i]);
        constraints.push_back(placed[0]);
        placed[0].priority = 750;
        constraints.push_back(placed[1]);
        placed[1].priority = 750;
        constrainFrame(view, node.mod.frame, constraints);
    } else {
        constraints.push_back(pin(content, NSLayoutAttributeLeading, NSLayoutRelationEqual, view, NSLayoutAttributeLeading, pad.leading));
        constraints.push_back(pin(view, NSLayoutAttributeTrailing, NSLayoutRelationEqual, content, NSLayoutAttributeTrailing, pad.trailing));
        constraints.push_back(pin(content, NSLayoutAttributeTop, NSLayoutRelationEqual, view, NSLayoutAttributeTop, pad.top));
        constraints.push_back(pin(view, NSLayoutAttributeBottom, NSLayoutRelationEqual, content, NSLayoutAttributeBottom, pad.bottom));
    }
    if (node.mod.aspectRatio && *node.mod.aspectRatio > 0) {
        NSLayoutConstraint* ratio = [NSLayoutConstraint constraintWithItem:view
                                                                 attribute:NSLayoutAttributeWidth
                                                                 relatedBy:NSLayoutRelationEqual
                                                                    toItem:view
                                                                 attribute:NSLayoutAttributeHeight
                                                                multiplier:*node.mod.aspectRatio
                                                                  constant:0];
        constraints.push_back(ratio);
    }

    if (view->_own) [NSLayoutConstraint deactivateConstraints:view->_own];
    view->_own = [NSMutableArray arrayWithCapacity:constraints.size()];
    for (NSLayoutConstraint* constraint : constraints) [view->_own addObject:constraint];
    [NSLayoutConstraint activateConstraints:view->_own];

    applyLayer(view, node.mod);
    view.toolTip = node.mod.help.empty() ? nil : toNSString(node.mod.help);
    view.accessibilityIdentifier = toNSString(node.mod.accessibilityIdentifier);
    [view updateTrackingAreas];
    return view;
}

}  // namespace

NSFont* fontFrom(const ui::Font& font) {
    NSFontWeight weight = NSFontWeightRegular;
    switch (font.weight) {
        case ui::FontWeight::ultraLight: weight = NSFontWeightUltraLight; break;
        case ui::FontWeight::thin: weight = NSFontWeightThin; break;
        case ui::FontWeight::light: weight = NSFontWeightLight; break;
        case ui::FontWeight::regular: weight = NSFontWeightRegular; break;
        case ui::FontWeight::medium: weight = NSFontWeightMedium; break;
        case ui::FontWeight::semibold: weight = NSFontWeightSemibold; break;
        case ui::FontWeight::bold: weight = NSFontWeightBold; break;
        case ui::FontWeight::heavy: weight = NSFontWeightHeavy; break;
        case ui::FontWeight::black: weight = NSFontWeightBlack; break;
    }
    if (font.design == ui::FontDesign::monospaced) return [NSFont monospacedSystemFontOfSize:font.size weight:weight];
    NSFont* system = [NSFont systemFontOfSize:font.size weight:weight];
    NSFontDescriptorSystemDesign design = NSFontDescriptorSystemDesignDefault;
    if (font.design == ui::FontDesign::rounded) design = NSFontDescriptorSystemDesignRounded;
    if (font.design == ui::FontDesign::serif) design = NSFontDescriptorSystemDesignSerif;
    if (design == NSFontDescriptorSystemDesignDefault) return system;
    NSFontDescriptor* descriptor = [system.fontDescriptor fontDescriptorWithDesign:design];
    return descriptor ? [NSFont fontWithDescriptor:descriptor size:font.size] : system;
}

NSColor* colorFrom(const ui::Color& color) {
    return [NSColor colorWithSRGBRed:color.red green:color.green blue:color.blue alpha:color.alpha];
}

void renderTree(NSView* container, const ui::Node& tree) {
    VLNodeView* shown = nil;
    for (NSView* subview in [container subviews]) {
        if ([subview isKindOfClass:[VLNodeView class]]) shown = (VLNodeView*)subview;
    }
    VLNodeView* root = build(shown, tree, Environment{});
    if (root != shown) {
        [shown removeFromSuperview];
        [container addSubview:root];
        // A root smaller than its container sits in its centre; one that fills, fills.
        std::vector<NSLayoutConstraint*> constraints;
        align(container, root, ui::Alignment::center, constraints);
        for (NSLayoutConstraint* constraint : constraints) constraint.active = YES;
    }
}

}  // namespace velmora::hosts::macos
