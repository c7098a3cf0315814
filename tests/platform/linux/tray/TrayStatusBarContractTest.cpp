#include <map>

#include "tests/contracts/StatusBarContract.h"
#include "tests/platform/linux/tray/StatusNotifierRig.h"

namespace kovra {
namespace {

// A panel that behaves like real ones: it caches what it reads and reads again only what a signal names. It toggles a
// clicked check mark by itself.
class PanelDriver {
  public:
    PanelDriver() { rig_.item.reset(); }

    StatusBar& bar() {
        rig_.panel.emplace(rig_.loop);
        return rig_.bar;
    }
    void settle() {
        rig_.settle();
        const bool isNew = !isKnown_ && rig_.panel->findsItem();
        const std::string signals = rig_.panel->signals();
        if (isNew || signals.find("NewIcon") != std::string::npos) {
            icon_ = unquoted(rig_.panel->itemProperty("IconName"));
        }
        if (isNew || signals.find("NewToolTip") != std::string::npos) readToolTip();
        if (isNew || signals.find("LayoutUpdated") != std::string::npos ||
            signals.find("ItemsPropertiesUpdated") != std::string::npos) {
            readMenu();
        }
        readStates(signals);
        isKnown_ = true;
    }
    std::string icon() const { return icon_; }
    std::string toolTip() const { return toolTip_; }
    bool isThere() { return !rig_.panel->itemProperty("Id").starts_with("error"); }
    void click(std::size_t position) {
        const int id = ids_.at(position);
        if (const auto state = states_.find(id); state != states_.end()) state->second = !state->second;
        EXPECT_EQ(rig_.panel->click(id), "");
    }
    std::vector<std::string> menu() const {
        std::vector<std::string> lines;
        for (std::size_t position = 0; position < ids_.size(); ++position) {
            const auto state = states_.find(ids_[position]);
            const std::string mark = state == states_.end() ? "" : state->second ? "[x] " : "[ ] ";
            lines.push_back(mark + lines_[position]);
        }
        return lines;
    }

  private:
    static std::string unquoted(const std::string& text) { return text.substr(1, text.size() - 2); }
    static void replace(std::string& text, const std::string& what, const std::string& with) {
        for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
            text.replace(at, what.size(), with);
        }
    }
    std::string property(int id, const char* name) {
        return rig_.panel->menu("GetProperty", [&](BusWriter& writer) { writer.integer(id).text(name); });
    }
    void readToolTip() {
        const std::string all = rig_.panel->itemProperty("ToolTip");
        const std::string before = R"(("" [] ")";
        const std::string after = R"(" "BLE-kovra"))";
        ASSERT_TRUE(all.starts_with(before) && all.ends_with(after)) << all;
        toolTip_ = all.substr(before.size(), all.size() - before.size() - after.size());
    }
    void readMenu() {
        ids_.clear();
        lines_.clear();
        states_.clear();
        const std::string layout = rig_.panel->layout(0, -1, {"type"});
        for (auto at = layout.find("[(") + 1; at != 0 && at < layout.size(); at = layout.find(" (", at) + 1) {
            ids_.push_back(std::stoi(layout.substr(at + 1)));
            readItem(ids_.back());
            if (layout.find(" (", at) == std::string::npos) break;
        }
    }
    void readItem(int id) {
        std::string line = unquoted(property(id, "label"));
        replace(line, "__", "_");
        if (property(id, "enabled") == "no") line = "(" + line + ")";
        if (property(id, "type") == "\"separator\"") line = "---";
        const std::string shortcut = property(id, "shortcut");
        if (shortcut == R"([["Control" "comma"]])") line += " (,)";
        if (shortcut == R"([["Control" "q"]])") line += " (q)";
        lines_.push_back(line);
        if (property(id, "toggle-type") == "\"checkmark\"") states_[id] = property(id, "toggle-state") == "1";
    }
    void readStates(const std::string& signals) {
        const std::string state = " [\"toggle-state\":";
        for (auto at = signals.find(state); at != std::string::npos; at = signals.find(state, at + 1)) {
            const int id = std::stoi(signals.substr(signals.rfind('(', at) + 1));
            states_[id] = signals.at(at + state.size()) == '1';
        }
    }

    StatusNotifierRig rig_;
    bool isKnown_ = false;
    std::string icon_;
    std::string toolTip_;
    std::vector<int> ids_;
    std::vector<std::string> lines_;
    std::map<int, bool> states_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(TrayStatusBar, StatusBarContract, PanelDriver);

TEST(TrayStatusBarTest, PassesOnTheAdviceAboutADesktopWithoutATray) {
    SdEventLoop loop;
    EXPECT_EQ(TrayStatusBar(loop, {}).advice(), "");
    EXPECT_EQ(TrayStatusBar(loop, {}, {.announce = {}, .advice = [] { return "Install a tray."; }}).advice(),
              "Install a tray.");
}

}  // namespace
}  // namespace kovra
