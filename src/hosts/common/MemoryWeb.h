// Recording web views: the web port for hosts without a browser engine.
//
// Provides: MemoryWebView, MemoryWeb.
// A view keeps the last page it loaded and every script it was asked to run;
// the host posts messages to its handlers as a page would.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Web.h"

namespace velmora::hosts {

class MemoryWebView : public platform::WebView {
public:
    void addMessageHandler(const std::string& name, std::function<void(const std::string&)> handler) override {
        handlers_[name] = std::move(handler);
    }
    void loadHTMLString(const std::string& html, const std::string& baseURL) override {
        html_ = html;
        baseURL_ = baseURL;
        ++loads_;
    }
    void evaluateJavaScript(const std::string& script) override { scripts_.push_back(script); }

    // Delivers a message as the page's script would; false if no handler has that name.
    bool post(const std::string& name, const std::string& bodyJson) {
        auto it = handlers_.find(name);
        if (it == handlers_.end()) return false;
        it->second(bodyJson);
        return true;
    }
    // A script that runs before the page's own, such as a recorded search a
    // snapshot replays once the live cloud is gone; empty: none.
    void setReplay(std::string script) { replay_ = std::move(script); }
    const std::string& replay() const { return replay_; }

    const std::string& html() const { return html_; }
    // The page as loaded, the replay ahead of its first script (or after
    // <head>, or at the start) so the page's script finds it in place.
    std::string loadedHTML() const override {
        if (replay_.empty()) return html_;
        const std::string tag = "<script>" + replay_ + "</script>";
        std::string page = html_;
        if (const auto at = page.find("<script"); at != std::string::npos) return page.insert(at, tag);
        if (const auto at = page.find("<head>"); at != std::string::npos) return page.insert(at + 6, tag);
        return tag + page;
    }
    const std::string& baseURL() const { return baseURL_; }
    int loads() const { return loads_; }
    const std::vector<std::string>& scripts() const { return scripts_; }

private:
    std::map<std::string, std::function<void(const std::string&)>> handlers_;
    std::string html_, baseURL_, replay_;
    int loads_ = 0;
    std::vector<std::string> scripts_;
};

class MemoryWeb : public platform::WebPort {
public:
    std::shared_ptr<platform::WebView> makeWebView() override {
        auto view = std::make_shared<MemoryWebView>();
        views_.push_back(view);
        return view;
    }
    const std::vector<std::shared_ptr<MemoryWebView>>& views() const { return views_; }

private:
    std::vector<std::shared_ptr<MemoryWebView>> views_;
};

}  // namespace velmora::hosts
