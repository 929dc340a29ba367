// The radio graph as a whole: source, layer II decoder, audio renderer.
#include "tests/filters/FilterWorld.h"

#include "dataservice/PadInfo.h"
#include "host/ce/Text.h"
#include "host/headend/LayerTwoEncoder.h"
#include "host/headend/Melody.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace filters;
using namespace filters_test;

namespace {

class Radio : public ::testing::Test {
protected:
    void SetUp() override {
        session = std::make_unique<Session>();
        ASSERT_EQ(session->controller->InitDABFilters(), S_OK);
        medmb::ServiceDescription service;
        service.kind = medmb::ServiceKind::Radio;
        generation = world.broadcast.Publish(service);
    }
    void TearDown() override {
        (void)session->control->Stop();
        (void)session->controller->CloseDABFilters();
        session.reset();
        EXPECT_EQ(world.system.files().OpenCount(), 0u);
    }
    void Put(medmb::BroadcastItem item) {
        world.broadcast.Put(generation, std::move(item));
        world.clock.Settle();
    }
    // A frame of layer II, of silence.
    void PutFrame(bool damaged = false) {
        static const auto frames =
            headend::EncodeLayerTwo({.sampleRate = 48000, .channels = 2, .kbps = 192}, std::vector<float>(9600));
        medmb::BroadcastItem item;
        item.kind = medmb::ItemKind::Audio;
        item.bytes = frames.front();
        item.damaged = damaged;
        Put(std::move(item));
    }
    void PutText(const std::string& utf8) {
        auto text = std::make_shared<medmb::RadioText>();
        text->utf8 = utf8;
        medmb::BroadcastItem item;
        item.kind = medmb::ItemKind::Text;
        item.text = text;
        Put(std::move(item));
    }
    void PutSlide(int subtype, const std::string& body) {
        auto slide = std::make_shared<medmb::RadioSlide>();
        slide->contentType = 2;
        slide->contentSubtype = subtype;
        slide->body.assign(body.begin(), body.end());
        medmb::BroadcastItem item;
        item.kind = medmb::ItemKind::Slide;
        item.slide = slide;
        Put(std::move(item));
    }

    World<ce::ManualClock> world;
    std::unique_ptr<Session> session;
    std::uint32_t generation = 0;
};

} // namespace

TEST_F(Radio, ALabelComesWithItsEvent) {
    (void)session->control->Run();
    PadInfo* record = nullptr;
    EXPECT_EQ(session->controller->GetPadInfo(&record), S_OK);
    EXPECT_EQ(record, nullptr);
    PutText("NEWS");
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_PAD], 1);
    ASSERT_EQ(session->controller->GetPadInfo(&record), S_OK);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->dlsLength, 4);
    EXPECT_EQ(std::string(record->dlsText, record->dlsText + 4), "NEWS");
    // The record stays as it is until it is fetched again.
    PutText("LATER");
    EXPECT_EQ(record->dlsLength, 4);
    EXPECT_EQ(session->controller->GetPadInfo(&record), S_OK);
    EXPECT_EQ(record->dlsLength, 5);
}

// The view takes labels only from a service that is on air, and one label may stay for hours.
TEST_F(Radio, PlaysBeforeItsFirstLabel) {
    (void)session->control->Run();
    world.clock.Settle();
    EXPECT_EQ(world.status.States(), std::vector{ReceptionState::kWaiting});
    PutFrame();
    EXPECT_EQ(world.status.States().back(), ReceptionState::kPlaying);
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_PAD], 0);
    PutText("NEWS");
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_PAD], 1);
}

// The view stops the radio while the signal is weak and forgets its labels then.
TEST_F(Radio, AfterAStopOldSoundIsLeftOutAndTheLabelComesAgain) {
    (void)session->control->Run();
    PutFrame();
    PutText("NEWS");
    (void)session->control->Stop();
    for (int i = 0; i < 400; ++i)
        PutFrame(true);
    (void)session->TakeEvents();
    (void)session->control->Run();
    world.clock.Settle();
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_PAD], 0);
    PutFrame();
    EXPECT_EQ(world.status.States().back(), ReceptionState::kPlaying);
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_PAD], 1);
    PadInfo* record = nullptr;
    ASSERT_EQ(session->controller->GetPadInfo(&record), S_OK);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(std::string(record->dlsText, record->dlsText + record->dlsLength), "NEWS");
}

TEST_F(Radio, SilenceHasAReason) {
    (void)session->control->Run();
    PutFrame();
    world.broadcast.SetSignal(generation, medmb::SignalState::Good);
    for (int i = 0; i < 30; ++i) {
        world.clock.Sleep(24);
        PutFrame(true);
    }
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoSignal) << "damaged frames alone are no signal";
    world.broadcast.SetSignal(generation, medmb::SignalState::Lost);
    world.clock.Sleep(600);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoSource);
    world.broadcast.SetSignal(generation, medmb::SignalState::Weak);
    PutFrame();
    EXPECT_EQ(world.status.States().back(), ReceptionState::kWeak);
    world.broadcast.End();
    world.clock.Sleep(600);
    EXPECT_EQ(world.status.States().back(), ReceptionState::kNoService);
    (void)session->control->Stop();
    EXPECT_EQ(world.status.States().back(), ReceptionState::kIdle);
    EXPECT_FALSE(session->TakeEvents().contains(IDMB_EVENT_NO_SIGNAL))
        << "radio has its own way, by the signal's strength";
}

TEST_F(Radio, WhatCameDuringAPauseIsToldAfterIt) {
    (void)session->control->Run();
    PutFrame();
    (void)session->control->Pause();
    PutText("NEWS");
    PutSlide(1, "picture");
    auto events = session->TakeEvents();
    EXPECT_EQ(events[IDMB_EVENT_PAD] + events[IDMB_EVENT_MOT], 0);
    (void)session->control->Run();
    world.clock.Settle();
    events = session->TakeEvents();
    EXPECT_EQ(events[IDMB_EVENT_PAD], 1);
    EXPECT_EQ(events[IDMB_EVENT_MOT], 1);
}

TEST_F(Radio, ASlideIsWholeBeforeItsEvent) {
    (void)session->control->Run();
    PutSlide(1, "first");
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_MOT], 1);
    EXPECT_EQ(ce::ContentOf(world.folder.path() / "root" / "MotBody.dat"), "first");
    PutSlide(1, "the second one");
    EXPECT_EQ(ce::ContentOf(world.folder.path() / "root" / "MotBody.dat"), "the second one");
    // Only the slide is left, no temporary name.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(world.folder.path() / "root"), {}), 1);
}

TEST_F(Radio, ASlideThatCannotBeWrittenMakesNoEvent) {
    (void)session->control->Run();
    PutSlide(1, "first");
    (void)session->TakeEvents();
    ce::FileFaults faults;
    faults.diskFullAfter = 3;
    world.system.files().SetFaults(faults);
    PutSlide(1, "second");
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_MOT], 0);
    EXPECT_EQ(ce::ContentOf(world.folder.path() / "root" / "MotBody.dat"), "first");
    world.system.files().SetFaults({});
}

TEST_F(Radio, APictureThatTheViewCannotDecodeIsLeftOut) {
    (void)session->control->Run();
    PutSlide(3, "png");
    EXPECT_EQ(session->TakeEvents()[IDMB_EVENT_MOT], 0);
}

TEST_F(Radio, FramesAreHeardAndDamageIsSilent) {
    const auto frames = headend::EncodeLayerTwo(
        {.sampleRate = 48000, .channels = 2, .kbps = 192},
        headend::RenderSound({.melody = "tone:440/660", .sampleRate = 48000, .channels = 2}, 0, 4));
    ASSERT_GT(frames.size(), 150u);
    (void)session->control->Run();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        medmb::BroadcastItem item;
        item.kind = medmb::ItemKind::Audio;
        item.bytes = frames[i];
        item.damaged = i >= 80 && i < 90;
        item.time = i * 24;
        Put(std::move(item));
        world.clock.Sleep(24);
    }
    world.clock.Sleep(500);
    const auto samples = world.tap.Samples();
    int largest = 0;
    int step = 0;
    std::size_t at = 0;
    std::size_t silent = 0;
    const std::size_t begin = 96000; // one second: it plays
    const std::size_t end = 96000 * 4;
    for (std::size_t i = begin; i < end; ++i) {
        largest = std::max(largest, std::abs(static_cast<int>(samples[i])));
        if (std::abs(samples[i] - samples[i - 2]) > step) {
            step = std::abs(samples[i] - samples[i - 2]);
            at = i;
        }
        silent += samples[i] == 0 ? 1 : 0;
    }
    EXPECT_GT(largest, 5000);
    // Ten frames of 24 ms; a tone of 660 Hz has no larger step than its own steepest place.
    EXPECT_NEAR(static_cast<double>(silent) / 96, 240, 40);
    EXPECT_LE(step, largest * 660.0 * 2 * 3.15 / 48000 * 1.1) << "at sample " << at;
}
