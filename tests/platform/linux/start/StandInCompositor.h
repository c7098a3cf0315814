#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// A substitute for a Wayland compositor. It speaks the protocol from its published description: it announces its
// globals, and records the requests of each client as text. It replies to a request for synchronization unless it
// hangs.
class StandInCompositor {
  public:
    explicit StandInCompositor(SdEventLoop& loop,
                               std::vector<std::string> globals = {"wl_compositor", "gtk_shell1", "wl_seat"})
        : globals_(std::move(globals)), loop_(loop) {
        environment_.set("XDG_RUNTIME_DIR", folder_.path().string());
        environment_.set("WAYLAND_DISPLAY", "wayland-7");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder_ / "wayland-7";
        EXPECT_LT(path.size(), sizeof address.sun_path);
        std::memcpy(address.sun_path, path.c_str(), path.size());
        EXPECT_EQ(::bind(socket_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(socket_.number(), 8), 0);
        watch_ = loop_.watch(socket_.number(), [this] {
            client_ = std::make_unique<FileDescriptor>(::accept4(socket_.number(), nullptr, nullptr, SOCK_CLOEXEC));
            ++clients;
            received_.clear();
            reading_ = loop_.watch(client_->number(), [this] { receive(); });
            watch_->rearm();
        });
    }

    int clients = 0;
    bool isClientGone = false;
    std::vector<std::string> requests;
    bool hangs = false;
    std::string nonsense;  // sent to a client in place of the globals

  private:
    static void put(std::string& bytes, std::uint32_t value) {
        std::array<char, 4> raw{};
        std::memcpy(raw.data(), &value, raw.size());
        bytes.append(raw.data(), raw.size());
    }
    static std::uint32_t get(std::string_view bytes, std::size_t at) {
        std::uint32_t value = 0;
        EXPECT_LE(at + sizeof value, bytes.size());
        std::memcpy(&value, bytes.data() + at, sizeof value);
        return value;
    }
    static std::string text(std::string_view bytes, std::size_t at) {
        const std::uint32_t size = get(bytes, at);
        EXPECT_EQ(bytes.substr(at + 4 + size - 1, 1), std::string_view("\0", 1)) << "a text ends in a zero";
        return std::string(bytes.substr(at + 4, size - 1));
    }
    static std::size_t padded(std::size_t size) { return (size + 3) / 4 * 4; }

    void send(std::uint32_t object, std::uint32_t opcode, const std::string& arguments) {
        std::string bytes;
        put(bytes, object);
        put(bytes, static_cast<std::uint32_t>(arguments.size() + 8) << 16U | opcode);
        bytes += arguments;
        // In two parts, since a stream keeps no boundaries of messages.
        EXPECT_EQ(::send(client_->number(), bytes.data(), 5, 0), 5);
        EXPECT_EQ(::send(client_->number(), bytes.data() + 5, bytes.size() - 5, 0), ssize_t(bytes.size() - 5));
    }
    void receive() {
        std::array<char, 4096> buffer{};
        const ssize_t size = ::recv(client_->number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size <= 0) {
            isClientGone = true;
            reading_.reset();
            return;
        }
        received_.append(buffer.data(), static_cast<std::size_t>(size));
        while (received_.size() >= 8 && received_.size() >= get(received_, 4) >> 16U) {
            const std::uint32_t length = get(received_, 4) >> 16U;
            ASSERT_GE(length, 8U);
            ASSERT_EQ(length % 4, 0U);
            handle(get(received_, 0), get(received_, 4) & 0xFFFFU, received_.substr(8, length - 8));
            received_.erase(0, length);
        }
        reading_->rearm();
    }
    void handle(std::uint32_t object, std::uint32_t opcode, const std::string& arguments) {
        if (object == 1 && opcode == 1) {  // wl_display.get_registry
            registry_ = get(arguments, 0);
            if (!nonsense.empty()) return sendNonsense();
            for (std::size_t i = 0; i < globals_.size(); ++i) {
                std::string global;
                put(global, static_cast<std::uint32_t>(i + 21));
                put(global, static_cast<std::uint32_t>(globals_[i].size() + 1));
                global += globals_[i];
                global.append(padded(globals_[i].size() + 1) - globals_[i].size(), '\0');
                put(global, 5);
                send(registry_, 0, global);
            }
        } else if (object == 1 && opcode == 0) {  // wl_display.sync
            requests.emplace_back("sync");
            std::string serial;
            put(serial, 3);
            if (!hangs) send(get(arguments, 0), 0, serial);
        } else if (object == registry_ && opcode == 0) {  // wl_registry.bind
            const std::string interface = text(arguments, 4);
            const std::size_t rest = 8 + padded(interface.size() + 1);
            const std::uint32_t name = get(arguments, 0);
            ASSERT_TRUE(name >= 21 && name < 21 + globals_.size());
            EXPECT_EQ(globals_[name - 21], interface);
            shell_ = get(arguments, rest + 4);
            requests.push_back("bind " + interface + " " + std::to_string(get(arguments, rest)));
        } else if (object == shell_ && opcode == 1) {  // gtk_shell1.set_startup_id
            requests.push_back("set_startup_id " + text(arguments, 0));
            EXPECT_EQ(arguments.size(), 4 + padded(requests.back().size() - std::strlen("set_startup_id ") + 1));
        } else {
            ADD_FAILURE() << "an unknown request: " << object << " " << opcode;
        }
    }
    void sendNonsense() { EXPECT_GE(::send(client_->number(), nonsense.data(), nonsense.size(), 0), 0); }

    const TempFolder folder_;
    Environment environment_;
    const std::vector<std::string> globals_;
    SdEventLoop& loop_;
    const FileDescriptor socket_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::unique_ptr<SdEventLoop::Watch> watch_;
    std::unique_ptr<FileDescriptor> client_;
    std::unique_ptr<SdEventLoop::Watch> reading_;
    std::string received_;
    std::uint32_t registry_ = 0;
    std::uint32_t shell_ = 0;
};

}  // namespace kovra
