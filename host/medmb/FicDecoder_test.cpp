#include "host/medmb/FicDecoder.h"

#include <gtest/gtest.h>

#include "host/medmb/TestEnsemble.h"
#include "host/wire/LabelText.h"
#include "platform/medmblib.h"

namespace medmb {
namespace {

using namespace test;
using wire::ByteVector;
using wire::LabelOf;
using wire::Transport;

using Figs = std::vector<std::pair<int, ByteVector>>;

void PushFigs(FicDecoder& fic, const Figs& figs) {
    for (const auto& fig : figs)
        fic.PushFic(Fib({fig}));
}

std::vector<std::string> Labels(const FicDecoder& fic) {
    std::vector<std::string> labels;
    for (const Service& service : fic.Model().services)
        labels.push_back(service.label ? service.label->Utf8() : "-");
    return labels;
}

TEST(FicDecoder, PiecesInAnyOrder) {
    Figs figs = {{1, LabelFig(LabelOf::Ensemble, 0xE1C0, "ENSEMBLE")},
                 {1, LabelFig(LabelOf::Programme, 0xE201, "ONE")},
                 {1, LabelFig(LabelOf::Data, 0xF1E00401, "TV")},
                 {0, SubChannelFig(1, 96)},
                 {0, ServicesFig({TelevisionService(0xF1E00401, 2)}, true)},
                 {0, ServicesFig({RadioService(0xE201, 1)}, false)},
                 {0, EnsembleFig(0xE1C0)}};
    for (int turn = 0; turn < 7; ++turn) {
        std::rotate(figs.begin(), figs.begin() + 1, figs.end());
        FicDecoder fic;
        PushFigs(fic, figs);
        const Ensemble ensemble = fic.Model();
        EXPECT_EQ(ensemble.id, 0xE1C0);
        ASSERT_TRUE(ensemble.label);
        EXPECT_EQ(ensemble.label->Utf8(), "ENSEMBLE");
        ASSERT_EQ(ensemble.services.size(), 2u);
        ASSERT_EQ(ensemble.subChannels.size(), 1u);
        const auto radio = fic.FindService(0xE201);
        ASSERT_TRUE(radio);
        EXPECT_EQ(radio->label->Utf8(), "ONE");
        EXPECT_EQ(radio->LibraryType(), DMB_SERVICE_TYPE_DAB_AUDIO);
        const auto television = fic.FindService(0xF1E00401);
        ASSERT_TRUE(television);
        EXPECT_EQ(television->label->Utf8(), "TV");
        EXPECT_EQ(television->LibraryType(), DMB_SERVICE_TYPE_DMB_VIDEO);
        EXPECT_EQ(television->Primary()->subChannelId, 2);
    }
}

TEST(FicDecoder, ADamagedBlockIsNotRead) {
    FicDecoder fic;
    ByteVector fib = Fib({{0, EnsembleFig(0xE1C0)}, {0, ServicesFig({RadioService(0xE201, 1)}, false)}});
    fib[3] ^= 1;
    fic.PushFic(fib);
    EXPECT_EQ(fic.Fibs(), 1u);
    EXPECT_EQ(fic.FibErrors(), 1u);
    EXPECT_FALSE(fic.HasServices());
}

TEST(FicDecoder, NextConfigurationAndOtherEnsemblesAreSkipped) {
    FicDecoder fic;
    PushFigs(fic, {{0, EnsembleFig(0xE1C0)},
                   {0, ServicesFig({RadioService(0xE202, 2)}, false, true, false)},
                   {0, ServicesFig({RadioService(0xE203, 3)}, false, false, true)}});
    EXPECT_FALSE(fic.HasServices());
}

TEST(FicDecoder, TypesOfServices) {
    FicDecoder fic;
    const auto typeOf = [&](const wire::ServiceEntry& entry, bool longIds = true) {
        PushFigs(fic, {{0, ServicesFig({entry}, longIds)}});
        return fic.FindService(entry.serviceId)->LibraryType();
    };
    EXPECT_EQ(typeOf(OneComponent(1, Transport::StreamAudio, 0, 1), false), 0);
    EXPECT_EQ(typeOf(OneComponent(2, Transport::StreamAudio, 63, 1), false), 63);
    EXPECT_EQ(typeOf(OneComponent(3, Transport::StreamData, 24, 1)), 8);
    EXPECT_EQ(typeOf(OneComponent(4, Transport::StreamData, 5, 1)), 0x105);
    EXPECT_EQ(typeOf(OneComponent(5, Transport::StreamData, 0, 1)), 0x100);
    // Nothing else may read as television.
    EXPECT_NE(typeOf(OneComponent(6, Transport::StreamAudio, 8, 1), false), 8);
    EXPECT_GT(typeOf(OneComponent(7, Transport::Packet, 0, 0)), 255);
    wire::ServiceEntry empty;
    empty.serviceId = 8;
    EXPECT_NE(typeOf(empty), 0);
    EXPECT_NE(typeOf(empty), 8);
}

TEST(FicDecoder, ThePrimaryComponentDecides) {
    wire::ServiceEntry service = TelevisionService(0xF1E00401, 2);
    service.components[0].primary = false;
    service.components.push_back(OneComponent(0, Transport::StreamData, 5, 9).components[0]);
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({service}, true)}});
    EXPECT_EQ(fic.FindService(0xF1E00401)->LibraryType(), 0x105);
    EXPECT_EQ(fic.FindService(0xF1E00401)->Primary()->subChannelId, 9);
}

TEST(FicDecoder, PacketComponentsFindTheirSubChannelInAnotherGroup) {
    wire::ServiceEntry service = OneComponent(0xE0000001, Transport::Packet, 0, 0);
    service.components[0].componentId = 77;
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({service}, true)}});
    EXPECT_EQ(fic.FindService(0xE0000001)->Primary()->subChannelId, -1);
    ByteVector body;
    wire::PacketComponentEntry packet;
    packet.componentId = 77;
    packet.type = wire::kDataTypeMot;
    packet.subChannelId = 12;
    wire::AppendFig0_3(body, packet);
    PushFigs(fic, {{0, Fig0Of(3, false, body)}});
    EXPECT_EQ(fic.FindService(0xE0000001)->Primary()->subChannelId, 12);
    EXPECT_EQ(fic.FindService(0xE0000001)->LibraryType(), 0x33C);
}

TEST(FicDecoder, ScrambledServicesAreNamedAsSuch) {
    FicDecoder fic;
    wire::ServiceEntry byService = TelevisionService(2, 2);
    byService.accessId = 3;
    PushFigs(fic, {{0, ServicesFig({OneComponent(1, Transport::StreamData, 24, 1, true)}, true)},
                   {0, ServicesFig({byService}, true)},
                   {0, ServicesFig({TelevisionService(3, 3)}, true)}});
    EXPECT_TRUE(fic.FindService(1)->Scrambled());
    EXPECT_TRUE(fic.FindService(2)->Scrambled());
    EXPECT_FALSE(fic.FindService(3)->Scrambled());
}

TEST(FicDecoder, RenamesAreFollowed) {
    FicDecoder fic;
    PushFigs(fic, {{0, EnsembleFig(0xE1C0)},
                   {0, ServicesFig({RadioService(0xE201, 1)}, false)},
                   {1, LabelFig(LabelOf::Programme, 0xE201, "OLD")},
                   {1, LabelFig(LabelOf::Programme, 0xE201, "NEW")}});
    EXPECT_EQ(Labels(fic), std::vector<std::string>{"NEW"});
}

TEST(FicDecoder, AReconfigurationMovesReusesAndRemoves) {
    FicDecoder fic;
    const auto frame = [&](const std::vector<wire::ServiceEntry>& services, int flags) {
        fic.PushFic(Fib({{0, EnsembleFig(0xE1C0, flags)}, {0, ServicesFig(services, false)}}));
    };
    for (int i = 0; i < 10; ++i)
        frame({RadioService(0xE201, 1), RadioService(0xE202, 2)}, 0);
    for (int i = 0; i < 10; ++i)
        frame({RadioService(0xE201, 1), RadioService(0xE202, 2)}, 3);
    // 0xE201 is gone; its sub-channel now belongs to another service.
    for (int i = 0; i < 60; ++i)
        frame({RadioService(0xE202, 7), RadioService(0xE203, 1)}, 0);
    EXPECT_FALSE(fic.FindService(0xE201));
    EXPECT_EQ(fic.FindService(0xE202)->Primary()->subChannelId, 7);
    EXPECT_EQ(fic.FindService(0xE203)->Primary()->subChannelId, 1);
}

TEST(FicDecoder, WhatIsAnnouncedNoMoreIsForgottenAfterTenSeconds) {
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({RadioService(0xE201, 1)}, false)}});
    for (int i = 0; i < 400; ++i)
        PushFigs(fic, {{0, EnsembleFig(0xE1C0)}});
    EXPECT_TRUE(fic.FindService(0xE201));
    for (int i = 0; i < 30; ++i)
        PushFigs(fic, {{0, EnsembleFig(0xE1C0)}});
    EXPECT_FALSE(fic.FindService(0xE201));
}

TEST(FicDecoder, AnotherEnsembleBeginsAnew) {
    FicDecoder fic;
    PushFigs(fic,
             {{0, EnsembleFig(0xE1C0)}, {0, ServicesFig({RadioService(0xE201, 1)}, false)}, {0, EnsembleFig(0xE1D0)}});
    EXPECT_FALSE(fic.HasServices());
    EXPECT_EQ(fic.Model().id, 0xE1D0);
    EXPECT_EQ(fic.Fibs(), 3u);
}

TEST(FicDecoder, ExtendedLabelsServeWhenThereIsNoOther) {
    const std::string text = "한국방송 라디오";
    const ByteVector bytes(text.begin(), text.end());
    const auto segment = [&](int number, std::size_t from, std::size_t length, bool toggle) {
        wire::ExtendedLabelSegment s;
        s.target = {LabelOf::Programme, 0xE201, 0, false};
        s.toggle = toggle;
        s.segment = number;
        s.segmentCount = 2;
        const wire::ByteSpan part = wire::ByteSpan(bytes).subspan(from, length);
        s.text = part;
        ByteVector data;
        wire::AppendFig2(data, s);
        return data;
    };
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({RadioService(0xE201, 1)}, false)}, {2, segment(1, 16, bytes.size() - 16, false)}});
    EXPECT_EQ(Labels(fic), std::vector<std::string>{"-"});
    // The first segment ends inside a character; with another toggle it does not belong to the second.
    PushFigs(fic, {{2, segment(0, 0, 16, true)}});
    EXPECT_EQ(Labels(fic), std::vector<std::string>{"-"});
    PushFigs(fic, {{2, segment(1, 16, bytes.size() - 16, true)}});
    EXPECT_EQ(Labels(fic), std::vector<std::string>{text});
    EXPECT_EQ(fic.Model().services[0].label->CodePage949(), wire::ToCodePage949(text));
    PushFigs(fic, {{1, LabelFig(LabelOf::Programme, 0xE201, "FIG ONE")}});
    EXPECT_EQ(Labels(fic), std::vector<std::string>{"FIG ONE"});
    EXPECT_EQ(fic.Model().services[0].extendedLabel->Utf8(), text);
}

TEST(FicDecoder, ServicesKeepTheOrderOfTheEnsemble) {
    const auto fig = [](std::vector<std::uint32_t> ids) {
        std::vector<wire::ServiceEntry> services;
        for (const std::uint32_t id : ids)
            services.push_back(RadioService(id, static_cast<int>(id)));
        return std::pair<int, ByteVector>{0, ServicesFig(services, false)};
    };
    const auto order = [](const FicDecoder& fic) {
        std::vector<std::uint32_t> ids;
        for (const Service& service : fic.Model().services)
            ids.push_back(service.id);
        return ids;
    };
    FicDecoder fromTheStart;
    PushFigs(fromTheStart, {fig({9, 3}), fig({7, 5}), fig({9, 3}), fig({7, 5})});
    EXPECT_EQ(order(fromTheStart), (std::vector<std::uint32_t>{9, 3, 7, 5}));
    // Begun in the middle of the turn; a group that spans the two shows where the turn begins.
    FicDecoder fromTheMiddle;
    PushFigs(fromTheMiddle, {fig({7, 5}), fig({9, 3}), fig({3, 7}), fig({9, 3})});
    EXPECT_EQ(order(fromTheMiddle), (std::vector<std::uint32_t>{9, 3, 7, 5}));
}

TEST(FicDecoder, CompleteNeedsLabelsAServiceForEachStreamAndQuiet) {
    FicDecoder fic;
    const std::vector<int> streams = {1, 2};
    const auto quiet = [&] {
        for (int i = 0; i < 25; ++i)
            fic.PushFic(Fib({{0, EnsembleFig(0xE1C0)}}));
    };
    quiet();
    EXPECT_FALSE(fic.Complete(streams));
    PushFigs(fic,
             {{0, ServicesFig({RadioService(0xE201, 1)}, false)}, {1, LabelFig(LabelOf::Programme, 0xE201, "ONE")}});
    quiet();
    EXPECT_FALSE(fic.Complete(streams)); // nobody has claimed sub-channel 2
    EXPECT_TRUE(fic.Complete({1}));
    PushFigs(fic, {{0, ServicesFig({TelevisionService(0xF1E00401, 2)}, true)}});
    quiet();
    EXPECT_FALSE(fic.Complete(streams)); // no label
    PushFigs(fic, {{1, LabelFig(LabelOf::Data, 0xF1E00401, "TV")}});
    EXPECT_TRUE(fic.Complete(streams));
    PushFigs(fic, {{0, SubChannelFig(1, 96)}});
    EXPECT_FALSE(fic.Complete(streams)); // news
    ByteVector body;
    wire::AppendFig0_7(body, {2, 5});
    PushFigs(fic, {{0, Fig0Of(7, false, body)}});
    EXPECT_TRUE(fic.Complete(streams)); // but the ensemble itself says that these are all
}

TEST(FicDecoder, TheSlideshowsTypeOrTheUsualOne) {
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({RadioService(0xE201, 1)}, false)}});
    EXPECT_EQ(fic.FindService(0xE201)->SlideshowType(), 12);
    ByteVector body;
    wire::AppendFig0_13(body, {0xE201, 0, {{wire::kUserApplicationSlideshow, {0x10, 0x3C}}}}, false);
    PushFigs(fic, {{0, Fig0Of(13, false, body)}});
    EXPECT_EQ(fic.FindService(0xE201)->SlideshowType(), 16);
}

TEST(FicDecoder, LateApplicationsAreAChange) {
    FicDecoder fic;
    PushFigs(fic, {{0, ServicesFig({RadioService(0xE201, 1)}, false)}});
    const std::uint64_t before = fic.Changes();
    ByteVector body;
    wire::AppendFig0_13(body, {0xE201, 0, {{wire::kUserApplicationSlideshow, {0x10, 0x3C}}}}, false);
    PushFigs(fic, {{0, Fig0Of(13, false, body)}});
    EXPECT_EQ(fic.Changes(), before + 1);
    PushFigs(fic, {{0, Fig0Of(13, false, body)}});
    EXPECT_EQ(fic.Changes(), before + 1);
}

} // namespace
} // namespace medmb
