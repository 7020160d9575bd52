// Check-only, included before every adapter file: what the platform's
// Foundation and AppKit declare and GNUstep does not, with the platform's
// signatures, limited to what the adapter uses.
#pragma once

#import <Foundation/Foundation.h>
#import <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

// --- Foundation -----------------------------------------------------------

typedef NSUInteger NSDataReadingOptions;
typedef NSUInteger NSDataWritingOptions;
constexpr NSJSONWritingOptions NSJSONWritingFragmentsAllowed = 1 << 2;

@interface NSData (PlatformAdditions)
+ (nullable instancetype)dataWithContentsOfFile:(NSString*)path
                                        options:(NSDataReadingOptions)options
                                          error:(NSError**)error;
- (BOOL)writeToFile:(NSString*)path options:(NSDataWritingOptions)options error:(NSError**)error;
@end

@interface NSFileManager (PlatformAdditions)
- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory inDomains:(NSSearchPathDomainMask)domainMask;
@end

@interface NSTask (PlatformAdditions)
@property(nullable, copy) NSURL* executableURL;
- (BOOL)launchAndReturnError:(NSError**)error;
@end

extern NSString* const NSAppleScriptErrorMessage;
extern NSString* const NSAppleScriptErrorNumber;

@interface NSAppleEventDescriptor (PlatformAdditions)
@property(nullable, readonly, copy) NSString* stringValue;
@end

@interface NSAppleScript (PlatformAdditions)
- (nullable instancetype)initWithSource:(NSString*)source;
- (NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary<NSString*, id>* _Nullable* _Nullable)errorInfo;
@end

@interface NSURLSessionConfiguration : NSObject <NSCopying>
@property(class, readonly, strong) NSURLSessionConfiguration* ephemeralSessionConfiguration;
@end

@interface NSURLSessionTask : NSObject <NSCopying>
- (void)resume;
- (void)cancel;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request
                           completionHandler:(void (^)(NSData* _Nullable data, NSURLResponse* _Nullable response,
                                                       NSError* _Nullable error))completionHandler;
@end

// --- AppKit ---------------------------------------------------------------

// The event types' names of the platform's current SDK (GNUstep has the
// older NSKeyDown, ... with the same raw values).
constexpr NSEventType NSEventTypeKeyDown = NSKeyDown;
constexpr NSEventType NSEventTypeKeyUp = NSKeyUp;
constexpr NSEventType NSEventTypeFlagsChanged = NSFlagsChanged;

@interface NSEvent (PlatformAdditions)
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent* _Nullable (^)(NSEvent* event))block;
+ (void)removeMonitor:(id)eventMonitor;
@end

@interface NSLayoutConstraint (PlatformAdditions)
- (void)setPriority:(NSLayoutPriority)priority;
@end

@interface NSView (PlatformAdditions)
@property BOOL translatesAutoresizingMaskIntoConstraints;
- (void)setContentHuggingPriority:(NSLayoutPriority)priority forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)layoutSubtreeIfNeeded;
- (void)setNeedsLayout:(BOOL)flag;
- (void)updateTrackingAreas;
- (void)addTrackingArea:(NSTrackingArea*)trackingArea;
- (void)removeTrackingArea:(NSTrackingArea*)trackingArea;
@property(copy) NSString* accessibilityIdentifier;
- (void)setAccessibilityElement:(BOOL)isElement;
- (void)setAccessibilityLabel:(nullable NSString*)label;
@end

typedef NS_ENUM(NSInteger, NSStackViewDistribution) {
    NSStackViewDistributionGravityAreas = -1,
    NSStackViewDistributionFill = 0,
    NSStackViewDistributionFillEqually = 1,
    NSStackViewDistributionFillProportionally = 2,
    NSStackViewDistributionEqualSpacing = 3,
    NSStackViewDistributionEqualCentering = 4,
};

@interface NSStackView : NSView
@property NSUserInterfaceLayoutOrientation orientation;
@property NSLayoutAttribute alignment;
@property CGFloat spacing;
@property NSStackViewDistribution distribution;
@property(readonly, copy) NSArray<__kindof NSView*>* arrangedSubviews;
- (void)addArrangedSubview:(NSView*)view;
- (void)removeArrangedSubview:(NSView*)view;
@end

@interface NSTextField (PlatformAdditions)
+ (instancetype)labelWithString:(NSString*)stringValue;
+ (instancetype)wrappingLabelWithString:(NSString*)stringValue;
+ (instancetype)textFieldWithString:(NSString*)stringValue;
@property NSLineBreakMode lineBreakMode;
@property NSInteger maximumNumberOfLines;
@property CGFloat preferredMaxLayoutWidth;
@property(nullable, copy) NSString* placeholderString;
@end

@interface NSButton (PlatformAdditions)
+ (instancetype)buttonWithTitle:(NSString*)title target:(nullable id)target action:(nullable SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title target:(nullable id)target action:(nullable SEL)action;
@end

@interface NSImageSymbolConfiguration : NSObject <NSCopying>
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight;
@end

@interface NSImage (PlatformAdditions)
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description;
@end

@interface NSImageView (PlatformAdditions)
@property(nullable, copy) NSColor* contentTintColor;
@property(nullable, copy) NSImageSymbolConfiguration* symbolConfiguration;
@end

typedef NSString* NSFontDescriptorSystemDesign;
extern NSFontDescriptorSystemDesign const NSFontDescriptorSystemDesignDefault;
extern NSFontDescriptorSystemDesign const NSFontDescriptorSystemDesignRounded;
extern NSFontDescriptorSystemDesign const NSFontDescriptorSystemDesignSerif;

@interface NSFontDescriptor (PlatformAdditions)
- (nullable NSFontDescriptor*)fontDescriptorWithDesign:(NSFontDescriptorSystemDesign)design;
@end

@interface NSFont (PlatformAdditions)
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight;
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight;
@end

constexpr NSRectEdge NSRectEdgeMaxY = NSMaxYEdge;

@interface NSColor (PlatformAdditions)
+ (nullable NSColor*)colorNamed:(NSString*)name;
@end

@interface NSColorSpace (PlatformAdditions)
+ (NSColorSpace*)sRGBColorSpace;
@end

@interface NSWindow (PlatformAdditions)
@property BOOL titlebarAppearsTransparent;
@end

@interface NSApplication (PlatformAdditions)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
@end

@interface NSPopover (PlatformAdditions)
@property(readonly, getter=isShown) BOOL shown;
@end

constexpr NSLineCapStyle NSLineCapStyleButt = NSButtLineCapStyle;
constexpr NSLineCapStyle NSLineCapStyleRound = NSRoundLineCapStyle;
constexpr NSLineCapStyle NSLineCapStyleSquare = NSSquareLineCapStyle;
constexpr NSDatePickerStyle NSDatePickerStyleClockAndCalendar = NSClockAndCalendarDatePickerStyle;
constexpr NSDatePickerElementFlags NSDatePickerElementFlagYearMonthDay = NSYearMonthDayDatePickerElementFlag;

NS_ASSUME_NONNULL_END
