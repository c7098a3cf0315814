#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "BLE_kovra/platform/linux/desktop/AlertSound.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"
#include "tests/support/linux/VirtualScreen.h"
#include "tests/support/posix/TempFolder.h"

// This header defines macros, so it is included last.
#include <X11/XKBlib.h>

namespace kovra {
namespace {

// An X client that receives the bell of the display, like a desktop that plays a sound instead of the bell.
class BellListener {
  public:
    BellListener() : display_(XOpenDisplay(nullptr)) {
        int major = XkbMajorVersion;
        int minor = XkbMinorVersion;
        EXPECT_TRUE(XkbQueryExtension(display_.get(), nullptr, &event_, nullptr, &major, &minor));
        XkbSelectEvents(display_.get(), XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
        XSync(display_.get(), False);
    }
    // Returns how many times the bell rang since the last call.
    int rings() {
        int rings = 0;
        XSync(display_.get(), False);
        while (XPending(display_.get()) > 0) {
            XkbEvent event{};
            XNextEvent(display_.get(), &event.core);
            if (event.type == event_ && event.any.xkb_type == XkbBellNotify) ++rings;
        }
        return rings;
    }

  private:
    Handle<Display, XCloseDisplay> display_;
    int event_ = 0;
};

std::string littleEndian(std::uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i, value >>= 8U) text += static_cast<char>(value & 0xFFU);
    return text;
}

// Returns a WAV file with a tenth of a second of silence.
std::string quietSound() {
    const std::string samples(1600, '\0');
    const auto size = static_cast<std::uint32_t>(samples.size());
    const std::string format = littleEndian(1, 2) + littleEndian(1, 2) + littleEndian(8000, 4) +
                               littleEndian(16000, 4) + littleEndian(2, 2) + littleEndian(16, 2);
    return "RIFF" + littleEndian(size + 36, 4) + "WAVEfmt " + littleEndian(16, 4) + format + "data" +
           littleEndian(size, 4) + samples;
}

// A desktop with a bell sound and a sound card that discards its output.
class AlertSoundBellTest : public testing::Test {
  protected:
    AlertSoundBellTest() {
        const auto theme = folder_.path() / "sounds" / "freedesktop";
        std::filesystem::create_directories(theme / "stereo");
        writeFile(theme / "index.theme",
                  "[Sound Theme]\nName=Test\nDirectories=stereo\n[stereo]\nOutputProfile=stereo\n");
        writeFile(theme / "stereo" / "bell.wav", quietSound());
        writeFile(folder_ / "alsa.conf", "pcm.!default { type null }\nctl.!default { type null }\n");
        set("XDG_DATA_HOME", folder_.path().string());
        set("XDG_CACHE_HOME", folder_ / "cache");
        set("ALSA_CONFIG_PATH", folder_ / "alsa.conf");
        set("CANBERRA_DRIVER", "alsa");
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    }
    ~AlertSoundBellTest() override {
        ::prctl(PR_SET_CHILD_SUBREAPER, 0);
        for (const char* each : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "ALSA_CONFIG_PATH", "CANBERRA_DRIVER"})
            ::unsetenv(each);
    }

    static void set(const char* variable, const std::string& value) { ::setenv(variable, value.c_str(), 1); }
    // Plays the sound and waits until the player exits, because the player needs the X server. The player is a child of
    // this process, which is a subreaper.
    static void play() {
        playAlertSound();
        int status = -1;
        ::waitpid(-1, &status, 0);
        EXPECT_TRUE(WIFEXITED(status)) << "the player was killed";
    }

    TempFolder folder_;
    VirtualScreen screen_;
    BellListener bell_;
};

TEST_F(AlertSoundBellTest, IsSilentIfTheEventSoundIsPlayed) {
    play();
    EXPECT_EQ(bell_.rings(), 0);
}

TEST_F(AlertSoundBellTest, RingsOnceWithoutASoundCard) {
    writeFile(folder_ / "alsa.conf", "");
    play();
    EXPECT_EQ(bell_.rings(), 1);
}

TEST_F(AlertSoundBellTest, RingsOnceWithoutASoundDriver) {
    set("CANBERRA_DRIVER", "nonsense");
    play();
    EXPECT_EQ(bell_.rings(), 1);
}

TEST_F(AlertSoundBellTest, IsSilentWithoutAServer) {
    set("CANBERRA_DRIVER", "nonsense");
    ::unsetenv("DISPLAY");
    play();
    EXPECT_EQ(bell_.rings(), 0);
}

}  // namespace
}  // namespace kovra
