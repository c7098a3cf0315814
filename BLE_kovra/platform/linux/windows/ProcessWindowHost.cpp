#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/Workspace.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

namespace {

// Returns the view at this path, or null if there is none.
const View* viewAt(const View& root, const std::vector<std::string>& path) {
    const View* view = &root;
    for (const std::string& step : path) {
        const auto& children = view->children;
        const auto isMeant = [&](const View& child) {
            return step == (child.id.empty() ? std::to_string(&child - children.data()) : child.id);
        };
        const auto found = std::find_if(children.begin(), children.end(), isMeant);
        if (found == children.end()) return nullptr;
        view = &*found;
    }
    return view;
}

// Applies the change if the control accepts it, and does nothing otherwise.
struct Change {
    const std::variant<bool, std::string>& value;

    void operator()(const Toggle& toggle) const {
        const bool* isOn = std::get_if<bool>(&value);
        if (isOn != nullptr && toggle.set) toggle.set(*isOn);
    }
    void operator()(const Picker& picker) const {
        const std::string* tag = std::get_if<std::string>(&value);
        if (tag == nullptr || !picker.select) return;
        const auto isChosen = [&](const Picker::Option& option) { return option.tag == *tag; };
        if (std::any_of(picker.options.begin(), picker.options.end(), isChosen)) picker.select(*tag);
    }
    template <typename Other>
    void operator()(const Other&) const {}
};

}  // namespace

class ProcessWindowHost::ProcessWindow : public Window {
  public:
    ProcessWindow(ProcessWindowHost& host, View content) : host_(host) {
        shown_.content = std::move(content);
        listening_ = process().listen(
            [this](const ToResident& message) { std::visit([this](const auto& each) { receive(each); }, message); });
        ends_ = process().listenForEnd([this] { hide(); });
    }
    ~ProcessWindow() override { hide(); }
    ProcessWindow(const ProcessWindow&) = delete;
    ProcessWindow& operator=(const ProcessWindow&) = delete;

    void setTitle(const std::string& title) override {
        shown_.title = title;
        scheduleShow();
    }
    void setStyleMask(unsigned mask) override {
        shown_.styleMask = mask;
        scheduleShow();
    }
    void setContentSize(Size size) override {
        shown_.contentSize = size;
        scheduleShow();
    }
    // Does nothing, because a closed window is only hidden. Its contents remain in this object until it is destroyed.
    void setReleasedWhenClosed(bool) override {}
    void setOnShown(std::function<void()> onShown) override { onShown_ = std::move(onShown); }
    void center() override { shown_.place.position.reset(); }

    void makeKeyAndOrderFront() override {
        shown_.front = ++host_.fronts_;
        shown_.activationToken = host_.token_.take();
        shown_.place.isMinimised = false;
        isVisible_ = true;
        mustReport_ = true;
        scheduleShow();
    }
    bool isVisible() const override { return isVisible_; }

    void setContent(View content) override {
        shown_.content = std::move(content);
        scheduleShow();
    }

  private:
    WindowProcess& process() const { return host_.process_; }

    template <typename Block>
    void post(Block block) {
        host_.queue_.async(lifetime_.guard(std::move(block)));
    }
    void scheduleShow() {
        if (!isVisible_ || std::exchange(isShowScheduled_, true)) return;
        post([this] {
            isShowScheduled_ = false;
            if (!isVisible_) return;
            if (!process().isRunning()) shown_.acknowledged = 0;  // a new process counts the user's changes from 1
            process().show(shown_);
            if (std::exchange(mustReport_, false)) showing_ = process().listenForShowing([this] { report(); });
        });
    }
    void report() {
        showing_.reset();
        if (onShown_) onShown_();
    }
    void hide() {
        if (!std::exchange(isVisible_, false)) return;
        showing_.reset();
        process().hideWindow();
    }

    // The content is sent again after the blocks that the application queued because of this change have run. So it
    // includes the result of the change.
    void receive(const ControlChanged& changed) {
        if (!isVisible_) return;
        if (const View* view = viewAt(shown_.content, changed.path)) {
            const View::Kind kind = view->kind;  // a copy, because the change may replace the view
            std::visit(Change{changed.value}, kind);
        }
        post([this, number = changed.number] {
            shown_.acknowledged = number;
            scheduleShow();
        });
    }
    void receive(const LinkFollowed& followed) {
        const View* view = isVisible_ ? viewAt(shown_.content, followed.path) : nullptr;
        const Link* link = view == nullptr ? nullptr : std::get_if<Link>(&view->kind);
        if (link != nullptr) host_.workspace_.open(link->destination);
    }
    void receive(const WindowPlaced& placed) { shown_.place = placed.place; }
    void receive(const WindowClosed& closed) {
        if (closed.front != shown_.front) return;  // the window was brought to the front again in the meantime
        shown_.place = closed.place;
        hide();
    }
    template <typename Other>
    void receive(const Other&) {}

    ProcessWindowHost& host_;
    ShowWindow shown_;
    bool isVisible_ = false;
    bool isShowScheduled_ = false;
    std::function<void()> onShown_;
    bool mustReport_ = false;
    WindowProcess::Showings::Token showing_;
    WindowProcess::Messages::Token listening_;
    WindowProcess::Ends::Token ends_;
    Lifetime lifetime_;
};

std::unique_ptr<Window> ProcessWindowHost::makeWindow(View content) {
    return std::make_unique<ProcessWindow>(*this, std::move(content));
}

}  // namespace kovra
