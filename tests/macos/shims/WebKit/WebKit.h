// Check-only: the parts of WebKit the adapter uses, with the platform's
// signatures. GNUstep has no WebKit.
#pragma once

#import <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

@class WKScriptMessage;
@class WKUserContentController;

@protocol WKScriptMessageHandler <NSObject>
- (void)userContentController:(WKUserContentController*)userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message;
@end

@interface WKScriptMessage : NSObject
@property(nonatomic, readonly, copy) NSString* name;
@property(nonatomic, readonly, copy) id body;
@end

@interface WKUserContentController : NSObject
- (void)addScriptMessageHandler:(id<WKScriptMessageHandler>)scriptMessageHandler name:(NSString*)name;
- (void)removeScriptMessageHandlerForName:(NSString*)name;
@end

@interface WKWebViewConfiguration : NSObject <NSCopying>
@property(nonatomic, strong) WKUserContentController* userContentController;
@end

@interface WKNavigation : NSObject
@end

@interface WKWebView : NSView
@property(nonatomic, readonly, copy) WKWebViewConfiguration* configuration;
- (instancetype)initWithFrame:(NSRect)frame configuration:(WKWebViewConfiguration*)configuration;
- (nullable WKNavigation*)loadHTMLString:(NSString*)string baseURL:(nullable NSURL*)baseURL;
- (void)evaluateJavaScript:(NSString*)javaScriptString
         completionHandler:(void (^_Nullable)(_Nullable id result, NSError* _Nullable error))completionHandler;
@end

NS_ASSUME_NONNULL_END
