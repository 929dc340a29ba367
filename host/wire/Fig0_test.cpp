#include "host/wire/Fig0.h"

#include <vector>

#include <gtest/gtest.h>

namespace wire {
namespace {

TEST(Fig0, HeaderFlags) {
    const auto fig = ParseFig0(ByteVector{0xE2, 0x01});
    ASSERT_TRUE(fig);
    EXPECT_TRUE(fig->header.nextConfiguration);
    EXPECT_TRUE(fig->header.otherEnsemble);
    EXPECT_TRUE(fig->header.longIds);
    EXPECT_EQ(fig->header.extension, 2);
    EXPECT_EQ(fig->body.size(), 1u);
    EXPECT_FALSE(ParseFig0({}));
    ByteVector out;
    AppendFig0Header(out, fig->header);
    EXPECT_EQ(out, ByteVector{0xE2});
}

TEST(Fig0, EnsembleInformation) {
    const auto info = ParseFig0_0(ByteVector{0xE1, 0xA0, 0x05, 0xF9});
    ASSERT_TRUE(info);
    EXPECT_EQ(info->ensembleId, 0xE1A0);
    EXPECT_EQ(info->changeFlags, 0);
    EXPECT_EQ(info->cifCountHigh, 5);
    EXPECT_EQ(info->cifCountLow, 249);
    const ByteVector changing = {0xE1, 0xA0, 0xE5, 0x10, 0x20};
    const auto change = ParseFig0_0(changing);
    ASSERT_TRUE(change);
    EXPECT_EQ(change->changeFlags, 3);
    EXPECT_TRUE(change->alarm);
    EXPECT_EQ(change->occurrenceChange, 0x20);
    ByteVector out;
    AppendFig0_0(out, *change);
    EXPECT_EQ(out, changing);
    EXPECT_FALSE(ParseFig0_0(ByteVector{0xE1, 0xA0, 0x05}));
}

TEST(Fig0, SubChannelsInBothForms) {
    // From a foreign FIB: sub-channels 63 (EEP 2-B), 9 (UEP), 2 (EEP 3-A) and 1 (UEP 45).
    const ByteVector body = {0xFD, 0x26, 0x94, 0x2A, 0x24, 0xEC, 0x19, 0x08, 0x8C, 0x88, 0x60, 0x04, 0x00, 0x2D};
    std::vector<SubChannelEntry> entries;
    ForEachFig0_1(body, [&](const SubChannelEntry& entry) { entries.push_back(entry); });
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].subChannelId, 63);
    EXPECT_EQ(entries[0].startAddress, 294);
    EXPECT_EQ(entries[0].option, 1);
    EXPECT_EQ(entries[0].level, 2);
    EXPECT_EQ(entries[0].size, 42);
    EXPECT_EQ(entries[0].BitRate(), 64);
    EXPECT_EQ(entries[1].BitRate(), 96);
    EXPECT_EQ(entries[1].level, 4);
    EXPECT_EQ(entries[2].BitRate(), 128);
    EXPECT_EQ(entries[3].uepIndex, 45);
    EXPECT_EQ(entries[3].BitRate(), 192);
    EXPECT_EQ(entries[3].level, 3);
    EXPECT_EQ(entries[3].size, 140);
    ByteVector out;
    for (const SubChannelEntry& entry : entries)
        AppendFig0_1(out, entry);
    EXPECT_EQ(out, body);
}

TEST(Fig0, BitRatesOfTheEqualProtectionSets) {
    SubChannelEntry entry;
    entry.longForm = true;
    const int sizesA[] = {96, 64, 48, 32};
    const int sizesB[] = {54, 42, 36, 30};
    for (int level = 1; level <= 4; ++level) {
        entry.level = level;
        entry.option = 0;
        entry.size = sizesA[level - 1];
        EXPECT_EQ(entry.BitRate(), 64);
        entry.option = 1;
        entry.size = sizesB[level - 1];
        EXPECT_EQ(entry.BitRate(), 64);
    }
    entry.option = 5;
    EXPECT_EQ(entry.BitRate(), 0);
}

TEST(Fig0, RadioServices) {
    const ByteVector body = {0xE2, 0x01, 0x01, 0x00, 0x06, 0xE2, 0x02, 0x01, 0x00, 0x0A};
    std::vector<ServiceEntry> services;
    ForEachFig0_2(body, false, [&](const ServiceEntry& service) { services.push_back(service); });
    ASSERT_EQ(services.size(), 2u);
    EXPECT_EQ(services[0].serviceId, 0xE201u);
    ASSERT_EQ(services[0].components.size(), 1u);
    EXPECT_EQ(services[0].components[0].transport, Transport::StreamAudio);
    EXPECT_EQ(services[0].components[0].type, kAudioTypeLayerTwo);
    EXPECT_EQ(services[0].components[0].subChannelId, 1);
    EXPECT_TRUE(services[0].components[0].primary);
    EXPECT_FALSE(services[0].components[0].conditionalAccess);
    ByteVector out;
    for (const ServiceEntry& service : services)
        AppendFig0_2(out, service, false);
    EXPECT_EQ(out, body);
}

TEST(Fig0, TelevisionServicesAreDataServices) {
    const ByteVector body = {0xF1, 0xE0, 0x04, 0x01, 0x01, 0x58, 0x06};
    std::vector<ServiceEntry> services;
    ForEachFig0_2(body, true, [&](const ServiceEntry& service) { services.push_back(service); });
    ASSERT_EQ(services.size(), 1u);
    EXPECT_EQ(services[0].serviceId, 0xF1E00401u);
    EXPECT_EQ(services[0].components[0].transport, Transport::StreamData);
    EXPECT_EQ(services[0].components[0].type, kDataTypeTransport);
    EXPECT_EQ(services[0].components[0].subChannelId, 1);
    ByteVector out;
    AppendFig0_2(out, services[0], true);
    EXPECT_EQ(out, body);
}

TEST(Fig0, AServiceThatIsCutOffIsLeftOut) {
    int count = 0;
    ForEachFig0_2(ByteVector{0xE2, 0x01, 0x02, 0x00, 0x06, 0xE2}, false, [&](const ServiceEntry&) { ++count; });
    EXPECT_EQ(count, 0);
}

TEST(Fig0, PacketComponents) {
    PacketComponentEntry entry;
    entry.componentId = 0xABC;
    entry.type = kDataTypeMot;
    entry.subChannelId = 17;
    entry.packetAddress = 1000;
    ByteVector body;
    AppendFig0_3(body, entry);
    EXPECT_EQ(body, (ByteVector{0xAB, 0xC0, 0x3C, 0x47, 0xE8}));
    entry.accessOrganisation = true;
    entry.access = 0x1234;
    entry.dataGroups = false;
    AppendFig0_3(body, entry);
    std::vector<PacketComponentEntry> entries;
    ForEachFig0_3(body, [&](const PacketComponentEntry& e) { entries.push_back(e); });
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].componentId, 0xABC);
    EXPECT_EQ(entries[0].subChannelId, 17);
    EXPECT_EQ(entries[0].packetAddress, 1000);
    EXPECT_TRUE(entries[0].dataGroups);
    EXPECT_EQ(entries[1].access, 0x1234);
    EXPECT_FALSE(entries[1].dataGroups);
}

TEST(Fig0, ConfigurationInformation) {
    const auto info = ParseFig0_7(ByteVector{0x12, 0xCC});
    ASSERT_TRUE(info);
    EXPECT_EQ(info->services, 4);
    EXPECT_EQ(info->count, 0x2CC);
    ByteVector out;
    AppendFig0_7(out, *info);
    EXPECT_EQ(out, (ByteVector{0x12, 0xCC}));
}

TEST(Fig0, ComponentDefinitionsInBothForms) {
    const ByteVector body = {0xE2, 0x01, 0x00, 0x01, 0xE2, 0x04, 0x01, 0x8A, 0xBC, 0xE2, 0x05, 0x82, 0x05, 0x00};
    std::vector<ComponentDefinition> entries;
    ForEachFig0_8(body, false, [&](const ComponentDefinition& e) { entries.push_back(e); });
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].subChannelId, 1);
    EXPECT_TRUE(entries[1].longForm);
    EXPECT_EQ(entries[1].componentId, 0xABC);
    EXPECT_EQ(entries[1].componentIdInService, 1);
    EXPECT_TRUE(entries[2].extension);
    ByteVector out;
    for (const ComponentDefinition& entry : entries)
        AppendFig0_8(out, entry, false);
    EXPECT_EQ(out, body);
}

TEST(Fig0, CountryAndLocalTime) {
    const auto info = ParseFig0_9(ByteVector{0x12, 0xF1, 0x01});
    ASSERT_TRUE(info);
    EXPECT_EQ(info->localTimeOffset, 18);
    EXPECT_EQ(info->extendedCountryCode, 0xF1);
    ByteVector out;
    AppendFig0_9(out, {-7, 0xE0, 1});
    const auto west = ParseFig0_9(out);
    ASSERT_TRUE(west);
    EXPECT_EQ(west->localTimeOffset, -7);
}

TEST(Fig0, DateAndTimeInBothForms) {
    // From a foreign recording.
    const ByteVector body = {0x3B, 0xED, 0x1A, 0x96, 0x04, 0x18};
    const auto time = ParseFig0_10(body);
    ASSERT_TRUE(time);
    EXPECT_TRUE(time->longForm);
    EXPECT_EQ(time->modifiedJulianDate, 0x3BED1A96u >> 14 & 0x1FFFF);
    EXPECT_EQ(time->hours, 10);
    EXPECT_EQ(time->minutes, 22);
    EXPECT_EQ(time->seconds, 1);
    EXPECT_EQ(time->milliseconds, 24);
    ByteVector out;
    AppendFig0_10(out, *time);
    const auto again = ParseFig0_10(out);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->modifiedJulianDate, time->modifiedJulianDate);
    EXPECT_EQ(again->minutes, 22);
    EXPECT_EQ(again->milliseconds, 24);
    EXPECT_FALSE(ParseFig0_10(ByteSpan(body).first(5)));
}

TEST(Fig0, SlideshowIsAUserApplication) {
    const ByteVector body = {0xE2, 0x03, 0x01, 0x00, 0x42, 0x0C, 0x3C, 0xE2, 0x04, 0x01, 0x00, 0x42, 0x0C, 0x3C};
    // Length 2, application type 2 in eleven bits: 0000 0000 010 00010.
    std::vector<UserApplicationEntry> entries;
    ForEachFig0_13(body, false, [&](const UserApplicationEntry& e) { entries.push_back(e); });
    ASSERT_EQ(entries.size(), 2u);
    ASSERT_EQ(entries[0].applications.size(), 1u);
    EXPECT_EQ(entries[0].applications[0].type, kUserApplicationSlideshow);
    EXPECT_EQ(entries[0].applications[0].XPadType(), 12);
    ByteVector out;
    for (const UserApplicationEntry& entry : entries)
        AppendFig0_13(out, entry, false);
    EXPECT_EQ(out, body);
}

TEST(Fig0, ForwardErrorCorrection) {
    std::vector<FecScheme> entries;
    ForEachFig0_14(ByteVector{0x45}, [&](const FecScheme& e) { entries.push_back(e); });
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].subChannelId, 17);
    EXPECT_EQ(entries[0].scheme, 1);
    ByteVector out;
    AppendFig0_14(out, entries[0]);
    EXPECT_EQ(out, ByteVector{0x45});
}

TEST(Fig0, ProgrammeTypes) {
    std::vector<ProgrammeType> entries;
    ForEachFig0_17(ByteVector{0xE2, 0x01, 0x00, 0x0A, 0xE2, 0x02, 0x80, 0x01, 0xE2, 0x03, 0x20, 0x65, 0x03},
                   [&](const ProgrammeType& e) { entries.push_back(e); });
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].serviceId, 0xE201);
    EXPECT_EQ(entries[0].code, 10);
    EXPECT_TRUE(entries[1].dynamic);
    EXPECT_EQ(entries[2].language, 0x65);
    EXPECT_EQ(entries[2].code, 3);
    ByteVector out;
    AppendFig0_17(out, entries[2]);
    EXPECT_EQ(out, (ByteVector{0xE2, 0x03, 0x20, 0x65, 0x03}));
}

TEST(Fig0, AnnouncementSupport) {
    AnnouncementSupport entry{0xE201, 0x0003, {1, 5}};
    ByteVector body;
    AppendFig0_18(body, entry);
    EXPECT_EQ(body, (ByteVector{0xE2, 0x01, 0x00, 0x03, 0x02, 0x01, 0x05}));
    int count = 0;
    ForEachFig0_18(body, [&](const AnnouncementSupport& e) {
        ++count;
        EXPECT_EQ(e.clusters, entry.clusters);
    });
    EXPECT_EQ(count, 1);
}

TEST(Fig0, TheTableOfUnequalProtectionHasItsKnownCorners) {
    EXPECT_EQ(kUepProfiles[0].size, 16);
    EXPECT_EQ(kUepProfiles[13].level, 2);
    EXPECT_EQ(kUepProfiles[63].size, 416);
    EXPECT_EQ(kUepProfiles[63].bitRate, 384);
    int last = 0;
    for (const UepProfile& profile : kUepProfiles) {
        EXPECT_GE(profile.bitRate, last);
        last = profile.bitRate;
    }
}

} // namespace
} // namespace wire
