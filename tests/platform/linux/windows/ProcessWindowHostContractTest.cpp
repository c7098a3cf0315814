#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"
#include "tests/contracts/WindowHostContract.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/platform/linux/windows/StandInWindow.h"

namespace kovra {
namespace {

class ProcessWindowHostDriver {
  public:
    using Path = std::vector<std::string>;

    WindowHost& host() { return host_; }
    // Runs a few turns of the queue. Waits until the process has received everything that was sent in them, and has
    // reported that it is shown.
    void settle() {
        for (int turn = 0; turn < 4; ++turn) standIn_.let({});
        if (!standIn_.isRunning()) return;
        standIn_.process().send(PopUpMenu{.x = 0, .y = 0, .asked = std::chrono::milliseconds(++settled_), .menu = {}});
        standIn_.turnUntil([&] {
            const auto newest = standIn_.newest<PopUpMenu>();
            return newest && newest->asked.count() == settled_;
        });
        bool isShown = false;
        const auto showing = standIn_.process().listenForShowing([&] { isShown = true; });
        standIn_.turnUntil([&] {
            if (const auto asked = standIn_.newest<Ping>(); asked && asked->number != answered_) {
                answered_ = asked->number;
                standIn_.send(Pong{answered_});
            }
            return isShown;
        });
        standIn_.process().release();
    }
    bool isSeen() const { return standIn_.showsWindow(); }
    std::string title() const { return standIn_.newest<ShowWindow>()->title; }
    std::string content() const { return ViewDump::of(standIn_.newest<ShowWindow>()->content); }
    void close() {
        standIn_.send(WindowClosed{standIn_.newest<ShowWindow>()->front, {}});
        standIn_.turnUntil([&] { return !standIn_.showsWindow(); });
    }
    void turn(const Path& path, bool isOn) { change(path, isOn); }
    void choose(const Path& path, const std::string& tag) { change(path, tag); }

  private:
    // Sends a change by the user and waits for the reply.
    void change(const Path& path, const std::variant<bool, std::string>& value) {
        standIn_.send(ControlChanged{++changes_, path, value});
        standIn_.turnUntil([&] { return standIn_.newest<ShowWindow>()->acknowledged == changes_; });
    }

    SdEventLoop loop_;
    StandInWindow standIn_{loop_};
    ActivationToken token_;
    FakeWorkspace workspace_;
    ProcessWindowHost host_{loop_, standIn_.process(), token_, workspace_};
    std::uint64_t changes_ = 0;
    std::int64_t settled_ = 0;
    std::uint64_t answered_ = 0;
};

INSTANTIATE_TYPED_TEST_SUITE_P(ProcessWindowHost, WindowHostContract, ProcessWindowHostDriver);

}  // namespace
}  // namespace kovra
