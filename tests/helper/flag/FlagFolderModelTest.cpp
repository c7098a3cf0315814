#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "helper/Descriptor.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"
#include "tests/support/Seeds.h"

namespace kovra::helper {
namespace {

namespace fs = std::filesystem;

// A source of random changes at the flag's path. It keeps a model of what is at the path: whether it is a regular file,
// its content, and its number of hard links in the flag's folder. The helper ignores hard links in other folders.
class RandomFlag {
  public:
    RandomFlag(FlagRig& rig, std::mt19937& random) : rig_(rig), random_(random) {}

    // Makes one change. Returns whether the helper must now read the flag as "on".
    bool change() {
        switch (pick(9)) {
            case 0:
                fs::remove_all(rig_.state());
                isFile_ = false;
                names_ = 0;
                break;
            case 1:
                replace([&] { fs::create_symlink(elsewhere(), rig_.state()); });
                break;
            case 2:
                replace([&] { ::mkfifo(rig_.state().c_str(), 0666); });
                break;
            case 3:
                replace([&] { fs::create_directory(rig_.state()); });
                break;
            case 4:
                if (!isFile_) break;
                fs::create_hard_link(rig_.state(), rig_.path("name" + std::to_string(count_++)));
                ++names_;
                break;
            case 6:
                if (!isFile_) break;
                fs::create_hard_link(rig_.state(), rig_.root() + "/name" + std::to_string(count_++));
                break;
            case 5:
                if (!isFile_) break;
                content_.resize(pick(6), '\0');
                fs::resize_file(rig_.state(), content_.size());
                break;
            default:
                if (!isFile_) fs::remove_all(rig_.state());
                if (!isFile_) names_ = 1;
                isFile_ = true;
                content_ = text();
                writeFile(rig_.state(), content_);
        }
        return isFile_ && names_ == 1 && content_ == "on";
    }

  private:
    void replace(const std::function<void()>& make) {
        fs::remove_all(rig_.state());
        isFile_ = false;
        make();
    }
    std::string elsewhere() {
        const std::string path = rig_.root() + "/elsewhere";
        writeFile(path, "on");
        return path;
    }
    // Returns "on", a small variation of "on" or "off", or sometimes a long text.
    std::string text() {
        if (pick(3) == 0) return "on";
        std::string made = pick(2) == 0 ? "on" : "off";
        if (pick(20) == 0) made.assign(pick(10'000), 'o');
        for (std::size_t edits = pick(3); edits > 0; --edits) {
            const auto byte = static_cast<char>(pick(256));
            const std::size_t at = pick(made.size() + 1);
            if (pick(2) == 0 || at == made.size()) {
                made.insert(at, 1, byte);
            } else {
                made[at] = byte;
            }
        }
        return made;
    }
    std::size_t pick(std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random_); }

    FlagRig& rig_;
    std::mt19937& random_;
    bool isFile_ = false;
    int names_ = 0;
    int count_ = 0;
    std::string content_;
};

TEST(FlagFolderModelTest, AgreesWithAModelOnRandomFiles) {
    int on = 0;
    int off = 0;
    for (const std::uint32_t seed : fixedAndFreshSeeds(3)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        FlagRig rig;
        std::mt19937 random(seed);
        RandomFlag flag(rig, random);
        for (int step = 0; step < 2'000; ++step) {
            const bool expected = flag.change();
            ASSERT_EQ(rig.isOn(), expected) << "step " << step;
            ++(expected ? on : off);
        }
    }
    EXPECT_GT(on, 500);
    EXPECT_GT(off, 500);
}

// Three users become active, write the flag, and write through descriptors that they opened earlier, in random order.
TEST(FlagFolderModelTest, IsOnOnlyForTheUserInPlaceInRandomHistories) {
    for (const std::uint32_t seed : fixedAndFreshSeeds(3)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t below) {
            return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
        };
        FlagRig rig;
        const std::vector<uid_t> users = {alice, bob, bob + 1};
        std::optional<uid_t> inPlace;
        std::map<uid_t, std::string> last;                  // the content of each user's file
        std::map<uid_t, Descriptor> kept;                   // the descriptor that the user opened last
        std::vector<std::pair<uid_t, Descriptor>> earlier;  // descriptors that users opened before that
        rig.handOver(std::nullopt);
        for (int step = 0; step < 600; ++step) {
            switch (pick(5)) {
                case 0:
                case 1: {
                    const std::size_t which = pick(users.size() + 1);
                    inPlace = which < users.size() ? std::optional(users[which]) : std::nullopt;
                    ASSERT_TRUE(rig.handOver(inPlace));
                    if (!inPlace) break;
                    if (kept.contains(*inPlace)) earlier.emplace_back(*inPlace, std::move(kept[*inPlace]));
                    const ActingAs user(*inPlace);
                    kept[*inPlace] = Descriptor(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
                    ASSERT_TRUE(kept[*inPlace].isOpen());
                    last.try_emplace(*inPlace, "off");
                    break;
                }
                case 2:
                    if (!inPlace) break;
                    last[*inPlace] = pick(3) == 0 ? "onn" : pick(2) == 0 ? "on" : "off";
                    rig.write(*inPlace, last[*inPlace]);
                    break;
                case 3: {
                    const uid_t user = users[pick(users.size())];
                    if (!kept.contains(user)) break;
                    last[user] = pick(2) == 0 ? "on" : "off";
                    FlagRig::writeTo(kept[user], last[user]);
                    break;
                }
                default: {
                    if (earlier.empty()) break;
                    const auto& [user, file] = earlier[pick(earlier.size())];
                    last[user] = "on";
                    FlagRig::writeTo(file, "on");
                }
            }
            ASSERT_EQ(rig.isOn(), inPlace && last[*inPlace] == "on") << "step " << step;
            ASSERT_TRUE(rig.folder().isFlagOf(inPlace)) << "step " << step;
            for (const uid_t user : users) ASSERT_EQ(mayWrite(user, rig.state()), user == inPlace) << "step " << step;
            // The folder contains at most the flag and one file for each user.
            ASSERT_LE(rig.names().size(), users.size() + 1);
            // When a user returns, the helper replaces any content other than "on" by "off".
            for (auto& [user, text] : last) {
                if (user != inPlace && text != "on") text = "off";
            }
        }
    }
}

}  // namespace
}  // namespace kovra::helper
