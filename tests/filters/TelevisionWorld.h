// The television graph as a whole: the module's controller, the real graph, the real filters; a clock that the test moves.
#pragma once

#include "tests/filters/FilterWorld.h"
#include "tests/filters/TestService.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace filters_test {

inline constexpr ce::Millis kTick = 20;

inline constexpr filters::Ticks kLargestSkew = 40 * filters::kTicksPerMs;

// Between pictures and what was heard when they were shown.
struct Skew {
    std::size_t compared = 0; // pictures
    filters::Ticks largest = 0;
};

class Television : public ::testing::Test {
protected:
    void SetUp() override { objects_ = dshow::LiveObjects(); }
    void TearDown() override {
        CloseSession();
        EXPECT_EQ(dshow::LiveObjects(), objects_);
        EXPECT_EQ(world.system.files().OpenCount(), 0u);
    }

    void CloseSession() {
        if (session) {
            EXPECT_EQ(session->Close(world.screen), S_OK);
            session.reset();
        }
        world.screen.Forget();
    }
    void OpenLive() {
        session = std::make_unique<Session>();
        ASSERT_EQ(session->controller->InitDMBFilters(nullptr, 0), S_OK);
        session->FollowSound(world.screen);
    }
    void OpenFile(const WCHAR* path) {
        session = std::make_unique<Session>();
        ASSERT_EQ(session->controller->InitDMBFilters(path, 1), S_OK);
        session->FollowSound(world.screen);
    }
    void Store(const char* name, const Bytes& bytes) {
        std::ofstream(world.folder.path() / "card" / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    Bytes Load(const char* name) {
        std::ifstream file(world.folder.path() / "card" / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Publish() {
        medmb::ServiceDescription service;
        service.kind = medmb::ServiceKind::Television;
        generation_ = world.broadcast.Publish(service);
    }
    void Put(filters::ByteSpan packets, bool discontinuity = false) {
        medmb::BroadcastItem item;
        item.bytes.assign(packets.begin(), packets.end());
        item.discontinuity = discontinuity;
        world.broadcast.Put(generation_, std::move(item));
        world.clock.Settle();
    }
    // Sends a service at its own pace, from one of its seconds to another.
    void Send(const Bytes& packets, double perSecond, double from, double to) {
        const std::size_t count = packets.size() / 188;
        for (double second = from; second < to - 1e-9; second += kTick / 1000.0) {
            const auto first = std::min(count, static_cast<std::size_t>(second * perSecond));
            const auto last = std::min(count, static_cast<std::size_t>((second + kTick / 1000.0) * perSecond));
            if (last > first)
                Put(filters::ByteSpan(packets).subspan(first * 188, (last - first) * 188));
            world.clock.Sleep(kTick);
        }
    }
    void Pass(ce::Millis milliseconds) {
        for (; milliseconds > 0; milliseconds -= kTick)
            world.clock.Sleep(std::min(kTick, milliseconds));
    }
    // Every picture against what was heard when it was shown; the first of a run comes early on purpose, and a second time in its
    // place.
    [[nodiscard]] Skew MeasureLipSync(bool fromStart = true) const {
        Skew skew;
        filters::Ticks last = -1;
        for (const ShownPicture& shown : world.screen.Shown()) {
            const bool again = shown.picture->time == last;
            last = shown.picture->time;
            if (!shown.heard || (fromStart && skew.compared == 0 && !again))
                continue;
            ++skew.compared;
            skew.largest = std::max(skew.largest, std::abs(*shown.heard - shown.picture->time));
        }
        return skew;
    }
    void ExpectLipSync(std::size_t atLeast, bool fromStart = true) {
        const Skew skew = MeasureLipSync(fromStart);
        EXPECT_GE(skew.compared, atLeast);
        EXPECT_LE(skew.largest, kLargestSkew);
    }

    World<ce::ManualClock> world;
    std::unique_ptr<Session> session;
    std::uint32_t generation_ = 0;

private:
    LONG objects_ = 0;
};

// Four seconds, made once.
inline const Service& TestTv() {
    static const Service service = MakeService({});
    return service;
}

} // namespace filters_test
