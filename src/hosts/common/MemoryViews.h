// In-memory windows and views: the views port for hosts that draw nothing.
//
// Provides: MemoryView, MemoryWindow, MemoryToolWindow, MemoryViews.
// The Linux host simulator builds its document window from these, and the
// tests build theirs. A text field is a MemoryView with a string value.
// Windows the library makes join the window list when they are made; the
// key window is the last one ordered front until it closes, when the key
// goes back to the one that was key before it (if it is still visible).
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Views.h"

namespace velmora::hosts {

class MemoryView : public platform::View {
public:
    explicit MemoryView(std::string className, platform::Rect frame = {},
                        std::optional<std::string> textValue = std::nullopt)
        : View(frame), className_(std::move(className)), textValue_(std::move(textValue)) {}

    std::string className() const override { return className_; }
    std::optional<std::string> textFieldValue() const override { return textValue_; }
    void setTextValue(std::optional<std::string> value) { textValue_ = std::move(value); }

private:
    std::string className_;
    std::optional<std::string> textValue_;
};

class MemoryWindow : public platform::Window {
public:
    MemoryWindow(std::string className, std::shared_ptr<platform::View> contentView, bool visible = true)
        : className_(std::move(className)), contentView_(std::move(contentView)), visible_(visible) {}
    std::string className() const override { return className_; }
    std::shared_ptr<platform::View> contentView() const override { return contentView_; }
    bool isVisible() const override { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    void setContentView(std::shared_ptr<platform::View> view) { contentView_ = std::move(view); }
    // The view at the top of the window's tree, above the content view, as
    // the platform's theme frame is; nothing for a window built without one.
    // The library never asks for it: only the host walks from there.
    std::shared_ptr<platform::View> frameView() const { return frameView_; }
    void setFrameView(std::shared_ptr<platform::View> view) { frameView_ = std::move(view); }

private:
    std::string className_;
    std::shared_ptr<platform::View> contentView_;
    std::shared_ptr<platform::View> frameView_;
    bool visible_;
};

// A window the library made, with every setting it was given.
class MemoryToolWindow : public platform::ToolWindow {
public:
    MemoryToolWindow(platform::Size contentSize, platform::WindowStyle style) : contentSize_(contentSize), style_(style) {}

    std::string className() const override { return "NSWindow"; }
    std::shared_ptr<platform::View> contentView() const override { return contentView_; }
    bool isVisible() const override { return visible_; }
    std::string title() const override { return title_; }
    void setTitle(const std::string& title) override { title_ = title; }
    void setTitlebarAppearsTransparent(bool transparent) override { transparentTitlebar_ = transparent; }
    void setOpaque(bool opaque) override { opaque_ = opaque; }
    void setBackgroundAlpha(double alpha) override { backgroundAlpha_ = alpha; }
    int level() const override { return level_; }
    void setLevel(int level) override { level_ = level; }
    void setContentView(std::shared_ptr<platform::View> view) override { contentView_ = std::move(view); }
    platform::Size contentSize() const override { return contentSize_; }
    void setContentSize(platform::Size size) override { contentSize_ = size; }
    void center() override { centered_ = true; }
    void makeKeyAndOrderFront() override {
        visible_ = true;
        if (onOrder_) onOrder_(this, true);
    }
    void close() override {
        if (!visible_) return;
        visible_ = false;
        if (onOrder_) onOrder_(this, false);
    }

    platform::WindowStyle style() const { return style_; }
    bool titlebarAppearsTransparent() const { return transparentTitlebar_; }
    bool isOpaque() const { return opaque_; }
    double backgroundAlpha() const { return backgroundAlpha_; }
    bool isCentered() const { return centered_; }
    // Told when the window comes front (true) or closes (false); set by MemoryViews.
    void setOrderObserver(std::function<void(MemoryToolWindow*, bool)> observer) { onOrder_ = std::move(observer); }

private:
    platform::Size contentSize_;
    platform::WindowStyle style_;
    std::shared_ptr<platform::View> contentView_;
    std::string title_;
    bool visible_ = false, transparentTitlebar_ = false, opaque_ = true, centered_ = false;
    double backgroundAlpha_ = 1;
    int level_ = 0;
    std::function<void(MemoryToolWindow*, bool)> onOrder_;
};

class MemoryViews : public platform::ViewsPort, public std::enable_shared_from_this<MemoryViews> {
public:
    std::shared_ptr<platform::Window> keyWindow() const override { return keyWindow_; }
    std::vector<std::shared_ptr<platform::Window>> windows() const override { return windows_; }
    std::shared_ptr<platform::View> makeView(const std::string& className, const platform::Rect& frame) override {
        return std::make_shared<MemoryView>(className, frame);
    }
    std::shared_ptr<platform::View> makeTextField(const std::string& text) override {
        return std::make_shared<MemoryView>("NSTextField", platform::Rect{}, text);
    }

    std::shared_ptr<platform::ToolWindow> makeWindow(platform::Size contentSize, platform::WindowStyle style) override {
        auto window = std::make_shared<MemoryToolWindow>(contentSize, style);
        std::weak_ptr<MemoryViews> weak = weak_from_this();
        window->setOrderObserver([weak](MemoryToolWindow* which, bool front) {
            if (auto views = weak.lock()) views->ordered(which, front);
        });
        windows_.push_back(window);
        return window;
    }
    void setActivationPolicy(platform::ActivationPolicy policy) override { activationPolicy_ = policy; }
    void activateIgnoringOtherApps(bool) override { ++activations_; }
    void openURL(const std::string& url) override { openedURLs_.push_back(url); }

    void addWindow(std::shared_ptr<platform::Window> window) { windows_.push_back(std::move(window)); }
    // Puts the window at this place in the window order (at the end when past it).
    void insertWindow(std::size_t at, std::shared_ptr<platform::Window> window) {
        windows_.insert(windows_.begin() + static_cast<std::ptrdiff_t>(std::min(at, windows_.size())), std::move(window));
    }
    // Takes the window out of the list; if it was key, no window is key.
    void removeWindow(const std::shared_ptr<platform::Window>& window) {
        std::erase(windows_, window);
        std::erase(previousKeys_, window);
        if (keyWindow_ == window) keyWindow_ = nullptr;
    }
    void setKeyWindow(std::shared_ptr<platform::Window> window) { keyWindow_ = std::move(window); }
    // Drops the windows the library made that are closed and held by nobody else.
    void forgetClosedWindows() {
        std::erase_if(windows_, [](const auto& window) {
            return window.use_count() == 1 && !window->isVisible() && dynamic_cast<MemoryToolWindow*>(window.get());
        });
    }
    std::optional<platform::ActivationPolicy> activationPolicy() const { return activationPolicy_; }
    int activations() const { return activations_; }
    const std::vector<std::string>& openedURLs() const { return openedURLs_; }

private:
    void ordered(MemoryToolWindow* which, bool front) {
        std::shared_ptr<platform::Window> window;
        for (const auto& candidate : windows_) {
            if (candidate.get() == which) window = candidate;
        }
        if (!window) return;
        if (front) {
            if (keyWindow_ != window) previousKeys_.push_back(keyWindow_);
            keyWindow_ = window;
            return;
        }
        std::erase_if(previousKeys_, [&](const auto& earlier) { return earlier == window; });
        if (keyWindow_ != window) return;
        keyWindow_ = nullptr;
        while (!previousKeys_.empty() && !keyWindow_) {
            auto earlier = previousKeys_.back();
            previousKeys_.pop_back();
            if (earlier && earlier->isVisible()) keyWindow_ = earlier;
        }
    }

    std::vector<std::shared_ptr<platform::Window>> windows_;
    std::shared_ptr<platform::Window> keyWindow_;
    std::vector<std::shared_ptr<platform::Window>> previousKeys_;
    std::optional<platform::ActivationPolicy> activationPolicy_;
    int activations_ = 0;
    std::vector<std::string> openedURLs_;
};

}  // namespace velmora::hosts
