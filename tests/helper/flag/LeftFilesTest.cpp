#include "helper/flag/LeftFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/aio_abi.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include "helper/Descriptor.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

// Alice keeps a descriptor of her flag open while Bob is at the machine.
class LeftFilesTest : public testing::Test {
  protected:
    LeftFilesTest() {
        rig.handOver(alice);
        const ActingAs user(alice);
        kept = Descriptor(::open(rig.state().c_str(), O_RDWR | O_CLOEXEC));
    }
    void SetUp() override {
        FlagRig::writeTo(kept, "on");
        ASSERT_TRUE(rig.handOver(bob));
    }
    long bytesOnDisk() const {
        struct stat status{};
        EXPECT_EQ(::fstat(kept.number(), &status), 0);
        return std::max<long>(status.st_blocks * 512, status.st_size);
    }
    bool isOpenForWriting() const {
        const Descriptor folder(::open(rig.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        const auto left = FlagFile::open(folder.number(), "state.left.61001", ::geteuid());
        return left && left->isOpenForWriting();
    }
    // How often the helper sleeps in this time.
    long waitsWithin(std::chrono::milliseconds time) {
        rusage before{};
        rusage after{};
        ::getrusage(RUSAGE_THREAD, &before);
        rig.runFor(time);
        ::getrusage(RUSAGE_THREAD, &after);
        return after.ru_nvcsw - before.ru_nvcsw;
    }
    // Writes a megabyte through Alice's descriptor with asynchronous I/O, of which inotify does not report everything.
    void writeAsynchronously() const {
        aio_context_t context = 0;
        ASSERT_EQ(::syscall(SYS_io_setup, 1, &context), 0);
        const std::string text(1 << 20, '.');
        iocb block{};
        block.aio_fildes = static_cast<unsigned>(kept.number());
        block.aio_lio_opcode = IOCB_CMD_PWRITE;
        block.aio_buf = reinterpret_cast<std::uintptr_t>(text.data());
        block.aio_nbytes = text.size();
        iocb* blocks = &block;
        EXPECT_EQ(::syscall(SYS_io_submit, context, 1, &blocks), 1);
        ::syscall(SYS_io_destroy, context);  // waits for the end
        EXPECT_GE(bytesOnDisk(), 1 << 20);
    }
    // Allocates disk space through Alice's descriptor. Returns whether the helper frees it.
    bool isFreed() {
        EXPECT_EQ(::fallocate(kept.number(), FALLOC_FL_KEEP_SIZE, 0, 4 << 20), 0);
        EXPECT_GE(bytesOnDisk(), 4 << 20);
        return rig.runUntil([&] { return bytesOnDisk() <= 1 << 16; });
    }

    FlagRig rig;
    Descriptor kept;
};

TEST_F(LeftFilesTest, AreTruncatedWhenTheyGrow) {
    for (int round = 0; round < 3; ++round) EXPECT_TRUE(isFreed());
    EXPECT_EQ(rig.content("state.left.61001"), "on");
    ASSERT_TRUE(rig.handOver(alice));
    EXPECT_TRUE(rig.isOn());
}

TEST_F(LeftFilesTest, AreTruncatedAlsoAfterTheirUserHasReturnedAndLeftAgain) {
    ASSERT_TRUE(rig.handOver(alice));
    ASSERT_TRUE(rig.handOver(bob));
    EXPECT_TRUE(isFreed());
    ASSERT_TRUE(rig.handOver(std::nullopt));
    EXPECT_TRUE(isFreed());
}

TEST_F(LeftFilesTest, AreTruncatedAlsoAfterARestart) {
    rig.reopen();
    rig.folder();
    EXPECT_TRUE(isFreed());
    rig.reopen();
    ASSERT_EQ(::fallocate(kept.number(), FALLOC_FL_KEEP_SIZE, 0, 4 << 20), 0);
    rig.folder();
    EXPECT_LE(bytesOnDisk(), 1 << 16);
}

TEST_F(LeftFilesTest, AreTruncatedAlsoAfterWritesThatTheKernelDoesNotReport) {
    for (int round = 0; round < 2; ++round) {
        writeAsynchronously();
        EXPECT_TRUE(rig.runUntil([&] { return bytesOnDisk() <= 1 << 16; }));
    }
}

TEST_F(LeftFilesTest, WakeTheHelperOnlyWhileOneIsOpenForWriting) {
    EXPECT_TRUE(isOpenForWriting());
    EXPECT_GE(waitsWithin(1800ms), 4);
    kept = Descriptor();
    EXPECT_FALSE(isOpenForWriting());
    rig.runFor(600ms);  // the last check
    EXPECT_LE(waitsWithin(1800ms), 2);
}

TEST_F(LeftFilesTest, AreTruncatedTwiceASecondAtMostDuringAStormOfWrites) {
    const auto begin = std::chrono::steady_clock::now();
    int truncations = 0;
    int writes = 0;
    const auto isOver = [&] { return std::chrono::steady_clock::now() - begin > (truncations < 3 ? 10s : 600ms); };
    for (; !isOver(); ++writes) {
        FlagRig::writeTo(kept, "a longer text");
        rig.runFor(0ms);
        struct stat status{};
        ASSERT_EQ(::fstat(kept.number(), &status), 0);
        if (status.st_size <= 3) ++truncations;
    }
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(truncations, 3);
    EXPECT_LE(truncations, time / 500ms + 1) << writes << " writes";
}

TEST_F(LeftFilesTest, DoNotDelayTheFlagByAStormOfWrites) {
    int changes = 0;
    rig.folder().onChange = [&] { ++changes; };
    rig.runFor(20ms);
    for (int i = 0; i < 200; ++i) {
        FlagRig::writeTo(kept, "off");
        rig.runFor(0ms);
    }
    changes = 0;
    rig.write(bob, "on");
    EXPECT_TRUE(rig.runUntil([&] { return changes > 0; }));
    EXPECT_TRUE(rig.isOn());
}

}  // namespace
}  // namespace kovra::helper
