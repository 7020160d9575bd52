#import <WebKit/WebKit.h>

#include "hosts/macos/MacStrings.h"
#include "hosts/macos/MacWeb.h"
#include "platform/Platform.h"

using velmora::hosts::macos::toNSString;
using velmora::hosts::macos::toStdString;

// One object receives every message of a web view and hands each to the
// handler registered under its name. WebKit keeps it strongly; it holds
// nothing of the view, so there is no cycle.
@interface VLScriptMessageHandler : NSObject <WKScriptMessageHandler>
- (void)setHandler:(std::function<void(const std::string&)>)handler forName:(NSString*)name;
@end

@implementation VLScriptMessageHandler {
    std::map<std::string, std::function<void(const std::string&)>> _handlers;
}

- (void)setHandler:(std::function<void(const std::string&)>)handler forName:(NSString*)name {
    _handlers[toStdString(name)] = std::move(handler);
}

- (void)userContentController:(WKUserContentController*)userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message {
    (void)userContentController;
    auto found = _handlers.find(toStdString(message.name));
    if (found == _handlers.end()) return;
    std::string json = "null";
    id body = message.body;
    if (body && [NSJSONSerialization isValidJSONObject:@[body]]) {
        NSData* data = [NSJSONSerialization dataWithJSONObject:body options:NSJSONWritingFragmentsAllowed error:nil];
        if (data) json = toStdString(data);
    }
    auto handler = found->second;
    velmora::platform::guarded("web message", [&] { handler(json); });
}

@end

namespace velmora::hosts::macos {

MacWebView::MacWebView() {
    handler_ = [[VLScriptMessageHandler alloc] init];
    WKWebViewConfiguration* configuration = [[WKWebViewConfiguration alloc] init];
    view_ = [[WKWebView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100) configuration:configuration];
}

void MacWebView::addMessageHandler(const std::string& name, std::function<void(const std::string& bodyJson)> handler) {
    NSString* key = toNSString(name);
    [handler_ setHandler:std::move(handler) forName:key];
    WKUserContentController* contents = view_.configuration.userContentController;
    [contents removeScriptMessageHandlerForName:key];
    [contents addScriptMessageHandler:handler_ name:key];
}

void MacWebView::loadHTMLString(const std::string& html, const std::string& baseURL) {
    NSURL* base = baseURL.empty() ? nil : [NSURL URLWithString:toNSString(baseURL)];
    [view_ loadHTMLString:toNSString(html) baseURL:base];
}

void MacWebView::evaluateJavaScript(const std::string& script) {
    [view_ evaluateJavaScript:toNSString(script) completionHandler:nil];
}

}  // namespace velmora::hosts::macos
