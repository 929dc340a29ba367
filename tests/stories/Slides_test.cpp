// Slides on the screen: what is painted equals what the decoder gives for the same bytes.
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include "dataservice/SlideBitmap.h"
#include "jpeg/JpegDecoder.h"
#include "platform/gdi.h"
#include "tests/stories/Story.h"
#include "tests/support/OuterData.h"

using namespace stories;
using scripted::Kind;

// A sanitizer keeps memory of its own: there the limit on one block is what a machine without memory is elsewhere.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define DMB_LIMITS_BLOCKS 1
#define DMB_FOR_THE_RUN_TIME extern "C" __attribute__((visibility("default")))
DMB_FOR_THE_RUN_TIME const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
DMB_FOR_THE_RUN_TIME const char* __tsan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
#else
#define DMB_LIMITS_BLOCKS 0
#endif

namespace {

// While it lives the process gets no further gigabyte.
class LittleMemory {
public:
    LittleMemory() {
        if (DMB_LIMITS_BLOCKS)
            return;
        getrlimit(RLIMIT_AS, &before);
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        rlimit little = before;
        little.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (std::size_t{1} << 30);
        setrlimit(RLIMIT_AS, &little);
    }
    ~LittleMemory() {
        if (!DMB_LIMITS_BLOCKS)
            setrlimit(RLIMIT_AS, &before);
    }
    LittleMemory(const LittleMemory&) = delete;
    LittleMemory& operator=(const LittleMemory&) = delete;

private:
    rlimit before{};
};

constexpr std::size_t kPixels = std::size_t{kSlideWidth} * kSlideHeight;

std::uint32_t Widen(std::uint32_t field, int bits) {
    return field << (8 - bits) | field >> (2 * bits - 8);
}

class SlideStory : public Story {
protected:
    void SetUp() override {
        Open();
        Tune(kMusic);
        OnAir();
    }

    // The file is there and the radio source says so.
    void Send(const std::string& bytes) {
        harness::WriteFile(device.Root() / "MotBody.dat", bytes);
        Report(Kind::DABSource, IDMB_EVENT_MOT);
    }
    static bool Probe(std::string& bytes, JpegImageInfo& info) {
        return MES_ParseJPEG(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size()), &info) !=
               0;
    }
    // Decodes into our own picture, whose border keeps what it held, as the view's does.
    bool DecodeHere(std::string bytes) {
        JpegImageInfo info{};
        return Probe(bytes, info) &&
               ImgDecodeJPEG(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size()),
                             reinterpret_cast<unsigned char*>(own.data()), kSlideWidth, kSlideHeight, &info) != 0;
    }
    // How many pixels of the slide's area are not those of our own picture.
    [[nodiscard]] std::size_t Wrong() {
        const std::uint32_t* screen = device.shell.Screen();
        const RECT& place = peer->SlideRect();
        std::size_t wrong = 0;
        for (int y = 0; y < kSlideHeight; ++y) {
            for (int x = 0; x < kSlideWidth; ++x) {
                const std::uint32_t value = own[static_cast<std::size_t>(y) * kSlideWidth + x];
                const std::uint32_t wanted =
                    Widen(value >> 11, 5) << 16 | Widen(value >> 5 & 0x3F, 6) << 8 | Widen(value & 0x1F, 5);
                const std::uint32_t shown = screen[(place.top + y) * 800 + place.left + x] & 0xFFFFFF;
                wrong += shown != wanted ? 1 : 0;
            }
        }
        return wrong;
    }
    // Sends every picture of a folder; counts those shown and those refused.
    void SendAll(const std::filesystem::path& folder, int& shown, int& refused) {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const std::string ending = entry.path().extension().string();
            if (entry.is_regular_file() && (ending == ".jpg" || ending == ".jpeg"))
                files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (const std::filesystem::path& file : files) {
            SCOPED_TRACE(file.string());
            std::string bytes = harness::ReadFile(file);
            JpegImageInfo info{};
            // What the probe refuses changes nothing; what the decoder refuses takes the slide away.
            const bool before = peer->SlideReady() != 0;
            const bool probed = Probe(bytes, info);
            const bool good = DecodeHere(bytes);
            Send(bytes);
            const bool ready = peer->SlideReady() != 0;
            ASSERT_EQ(ready, probed ? good : before);
            ++(good ? shown : refused);
            if (ready) {
                ASSERT_EQ(Wrong(), 0u);
            }
        }
    }

    std::vector<std::uint16_t> own = std::vector<std::uint16_t>(kPixels);
};

} // namespace

TEST_F(SlideStory, EveryBroadcastSlideAppearsAsDecoded) {
    int shown = 0, refused = 0;
    SendAll(harness::TestData("broadcast"), shown, refused);
    EXPECT_GE(shown, 1);
    EXPECT_EQ(refused, 0);
}

TEST_F(SlideStory, EverySamplePictureAppearsAsDecodedOrNotAtAll) {
    int shown = 0, refused = 0;
    SendAll(harness::TestData("jpeg"), shown, refused);
    EXPECT_GE(shown, 30);
    EXPECT_GE(refused, 1);
}

TEST_F(SlideStory, OuterBroadcastSlidesAppearAsDecoded) {
    DMB_OUTER_DATA(folder, "broadcast/slides");
    int shown = 0, refused = 0;
    SendAll(folder, shown, refused);
    EXPECT_GE(shown, 10);
}

TEST_F(SlideStory, OuterPicturesAppearAsDecodedOrNotAtAll) {
    DMB_OUTER_DATA(folder, "jpeg");
    int shown = 0, refused = 0;
    SendAll(folder, shown, refused);
    EXPECT_GE(shown, 300);
    EXPECT_GE(refused, 20);
}

TEST_F(SlideStory, ABufferThatCannotGrowIsGivenBackAndTheNextSlideShows) {
    const std::string slide = harness::ReadFile(harness::TestData("broadcast/slide.jpg"));
    Send(slide);
    ASSERT_TRUE(DecodeHere(slide));
    ASSERT_EQ(peer->MotBodySize(), slide.size());
    // The largest file that is read at all; on the disk it takes no room.
    std::filesystem::resize_file(device.Root() / "MotBody.dat", 0x7FFFFFFF);
    {
        const LittleMemory little;
        Report(Kind::DABSource, IDMB_EVENT_MOT);
    }
    EXPECT_EQ(peer->MotBody(), nullptr);
    EXPECT_EQ(peer->MotBodySize(), 0u) << "or a later slide would be written beyond the block's end";
    EXPECT_NE(peer->SlideReady(), 0);
    EXPECT_EQ(Wrong(), 0u) << "the slide before stays";
    const std::string next = harness::ReadFile(harness::TestData("jpeg/base-444-q30-800x600-harvesters.jpg"));
    Send(next);
    ASSERT_TRUE(DecodeHere(next));
    EXPECT_EQ(peer->MotBodySize(), next.size());
    EXPECT_EQ(Wrong(), 0u);
}

// Edge case: a picture smaller than 320x240 is centred, and around it stays the picture before.
TEST_F(SlideStory, BorderOfASmallerPictureKeepsTheOneBefore) {
    const std::string large = harness::ReadFile(harness::TestData("jpeg/base-444-q30-800x600-harvesters.jpg"));
    const std::string little = harness::ReadFile(harness::TestData("jpeg/grey-base-160x120-phone.jpg"));
    Send(large);
    ASSERT_TRUE(DecodeHere(large));
    const std::vector<std::uint16_t> before = own;
    Send(little);
    ASSERT_TRUE(DecodeHere(little));
    EXPECT_EQ(Wrong(), 0u);
    EXPECT_TRUE(std::equal(own.begin(), own.begin() + 60 * kSlideWidth, before.begin())) << "above it";
    EXPECT_NE(own[120 * kSlideWidth + 160], before[120 * kSlideWidth + 160]);
}

TEST_F(SlideStory, FirstSlideHasABlackBorder) {
    const std::string little = harness::ReadFile(harness::TestData("jpeg/grey-base-160x120-phone.jpg"));
    Send(little);
    ASSERT_TRUE(DecodeHere(little)); // over black
    EXPECT_EQ(Wrong(), 0u);
}

TEST_F(SlideStory, APictureThatCannotBeDecodedTakesTheSlideAway) {
    const std::string good = harness::ReadFile(harness::TestData("broadcast/slide.jpg"));
    Send(good);
    ASSERT_TRUE(DecodeHere(good));
    ASSERT_EQ(Wrong(), 0u);
    // The probe passes, the decode does not: no quantisation table.
    device.ce.debug().Clear();
    Send(harness::ReadFile(harness::TestData("jpeg/nodqt-phone.jpg")));
    EXPECT_EQ(peer->SlideReady(), 0);
    EXPECT_TRUE(device.ce.debug().Lines().empty()) << "only a failing probe is told";
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Idle();
    EXPECT_GT(Wrong(), kPixels / 2);
    Send(good);
    EXPECT_EQ(Wrong(), 0u) << "the next good one is shown again";
}

TEST_F(SlideStory, AFailingProbeKeepsTheSlideAndIsToldOnce) {
    const std::string good = harness::ReadFile(harness::TestData("broadcast/slide.jpg"));
    Send(good);
    ASSERT_TRUE(DecodeHere(good));
    device.ce.debug().Clear();
    Send("this is no picture");
    EXPECT_EQ(device.ce.debug().Lines(), std::vector<WString>{WTEXT("[MES_ParseJPEG] failed!\n")});
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_EQ(Wrong(), 0u);
}

TEST_F(SlideStory, ASlideDecodedWhileSmallIsPaintedOnReturn) {
    ASSERT_TRUE(device.shell.Minimize());
    Idle();
    const std::string good = harness::ReadFile(harness::TestData("broadcast/slide.jpg"));
    Send(good);
    ASSERT_TRUE(DecodeHere(good));
    EXPECT_EQ(peer->SlideReady(), 1);
    EXPECT_GT(Wrong(), kPixels / 2);
    device.shell.Restore();
    Idle();
    EXPECT_EQ(Wrong(), 0u);
}

TEST_F(SlideStory, ABusyLockSkipsThePaintAndTheNextOneShowsIt) {
    const std::string good = harness::ReadFile(harness::TestData("broadcast/slide.jpg"));
    Send(good);
    ASSERT_TRUE(DecodeHere(good));
    ASSERT_EQ(Wrong(), 0u);
    // Another thread is busy with the slide while the window is painted whole.
    std::promise<void> held, release;
    std::thread other([&] {
        peer->SlideLock().Enter();
        held.set_value();
        release.get_future().wait();
        peer->SlideLock().Leave();
    });
    held.get_future().wait();
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Idle();
    EXPECT_GT(Wrong(), kPixels / 2);
    release.set_value();
    other.join();
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Idle();
    EXPECT_EQ(Wrong(), 0u);
}

// ---- A view that goes ----------------------------------------------------------------------------------------------------

// Found on a walk through the code: neither way leaves the session before its buffers go, and taking it down paints.
TEST_F(SlideStory, ClosingAPausedRadioPaintsNoFreedSlide) {
    Send(harness::ReadFile(harness::TestData("broadcast/slide.jpg")));
    ASSERT_EQ(peer->SlideReady(), 1);
    peer->NoSignal() = 1;
    view->Pause();
    ASSERT_EQ(view->GetPlayMode(), kPlayModePaused);
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Close();
}

TEST_F(SlideStory, ClosingARadioThatCannotBeStoppedPaintsNoFreedSlide) {
    Send(harness::ReadFile(harness::TestData("broadcast/slide.jpg")));
    ASSERT_EQ(peer->SlideReady(), 1);
    stage[Kind::AudioRenderer].stopped = E_FAIL;
    InvalidateRect(view->GetSafeHwnd(), nullptr, FALSE);
    Close();
}
