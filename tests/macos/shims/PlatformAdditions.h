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

NS_ASSUME_NONNULL_END
