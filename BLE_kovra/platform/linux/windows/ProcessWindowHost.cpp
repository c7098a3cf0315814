#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"

#include <algorithm>
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

// Null where no view stands at this path any more.
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

// Changes what can be changed that way, and nothing else.
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
        showSoon();
    }
    void setStyleMask(unsigned mask) override {
        shown_.styleMask = mask;
        showSoon();
    }
    void setContentSize(Size size) override {
        shown_.contentSize = size;
        showSoon();
    }
    // It is hidden in any case: what it is lives here, and goes with this object.
    void setReleasedWhenClosed(bool) override {}
    void center() override { shown_.place.position.reset(); }

    void makeKeyAndOrderFront() override {
        shown_.front = ++host_.fronts_;
        shown_.activationToken = host_.token_.take();
        shown_.place.isMinimised = false;
        isVisible_ = true;
        showSoon();
    }
    bool isVisible() const override { return isVisible_; }

    void setContent(View content) override {
        shown_.content = std::move(content);
        showSoon();
    }

  private:
    WindowProcess& process() const { return host_.process_; }

    template <typename Block>
    void later(Block block) {
        host_.queue_.async(lifetime_.guard(std::move(block)));
    }
    void showSoon() {
        if (!isVisible_ || std::exchange(isShownSoon_, true)) return;
        later([this] {
            isShownSoon_ = false;
            if (!isVisible_) return;
            if (!process().isRunning()) shown_.acknowledged = 0;  // the next one counts anew
            process().show(shown_);
        });
    }
    void hide() {
        if (!std::exchange(isVisible_, false)) return;
        process().hideWindow();
    }

    // The answer comes after whatever the change made the application put on the queue, so that it is of one piece with
    // what came of the change.
    void receive(const ControlChanged& changed) {
        if (!isVisible_) return;
        if (const View* view = viewAt(shown_.content, changed.path)) {
            const View::Kind kind = view->kind;  // which may be replaced meanwhile
            std::visit(Change{changed.value}, kind);
        }
        later([this, number = changed.number] {
            shown_.acknowledged = number;
            showSoon();
        });
    }
    void receive(const LinkFollowed& followed) {
        const View* view = isVisible_ ? viewAt(shown_.content, followed.path) : nullptr;
        const Link* link = view == nullptr ? nullptr : std::get_if<Link>(&view->kind);
        if (link != nullptr) host_.workspace_.open(link->destination);
    }
    void receive(const WindowPlaced& placed) { shown_.place = placed.place; }
    void receive(const WindowClosed& closed) {
        if (closed.front != shown_.front) return;  // it was brought to the front again meanwhile
        shown_.place = closed.place;
        hide();
    }
    template <typename Other>
    void receive(const Other&) {}

    ProcessWindowHost& host_;
    ShowWindow shown_;
    bool isVisible_ = false;
    bool isShownSoon_ = false;
    WindowProcess::Messages::Token listening_;
    WindowProcess::Ends::Token ends_;
    Lifetime lifetime_;
};

std::unique_ptr<Window> ProcessWindowHost::makeWindow(View content) {
    return std::make_unique<ProcessWindow>(*this, std::move(content));
}

}  // namespace kovra
