#include "host/headend/Description.h"

#include <gtest/gtest.h>

#include "host/headend/Demo.h"
#include "host/headend/Multiplex.h"

namespace {

std::string WithService(const std::string& members) {
    return R"({"ensembles": [{"block": "8A", "id": "0xE1C1", "label": {"text": "TEST"}, "services": [{)" + members +
           "}]}]}";
}

const std::string kRadio = R"("kind": "radio", "id": "0xE201", "subChannel": 1, "bitRate": 128)";
const std::string kLabel = R"(, "label": {"text": "ONE"})";

std::string ErrorOf(const std::string& json) {
    try {
        (void)headend::ParseDescription(json, "x.json", {});
    } catch (const headend::DescriptionError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Description, SmallestRadio) {
    const auto description = headend::ParseDescription(WithService(kRadio + kLabel), "x.json", {});
    ASSERT_EQ(description.ensembles.size(), 1u);
    const auto& service = description.ensembles[0].services.at(0);
    EXPECT_EQ(service.kind, headend::ServiceKind::kRadio);
    EXPECT_EQ(service.id, 0xE201u);
    EXPECT_EQ(service.protection.level, 3);
    EXPECT_EQ(description.ensembles[0].id, 0xE1C1);
}

struct BadCase {
    const char* name;
    std::string json;
    const char* message;
};

class BadDescription : public ::testing::TestWithParam<BadCase> {};

TEST_P(BadDescription, IsRefusedWithFilePlaceAndReason) {
    const std::string error = ErrorOf(GetParam().json);
    EXPECT_EQ(error.rfind("x.json: ", 0), 0u) << error;
    EXPECT_NE(error.find(GetParam().message), std::string::npos) << error;
}

INSTANTIATE_TEST_SUITE_P(
    Description, BadDescription,
    ::testing::Values(
        BadCase{"syntax", "{\n\"seconds\": 5,\n\"ensembles\": [}\n", "line 3: "},
        BadCase{"numberOverflow", R"({"seconds": 1e3005})", "the document: number overflow"},
        BadCase{"empty", "", "line 1: "}, BadCase{"noObject", "[]", "the document: must be an object"},
        BadCase{"noEnsemble", "{}", "ensembles: there is none"},
        BadCase{"noLabel", WithService(kRadio), "ensembles[0].services[0].label: is missing"},
        BadCase{"misspelt", WithService(kRadio + kLabel + R"(, "padbytes": 4)"),
                "ensembles[0].services[0].padbytes: is not known here"},
        BadCase{"kind", WithService(R"("kind": "teletext")" + kLabel), "services[0].kind: \"teletext\" is none of"},
        BadCase{"longId", WithService(R"("kind": "radio", "id": "0x1E201", "subChannel": 1, "bitRate": 128)" + kLabel),
                "services[0].id: must be a number"},
        BadCase{"badId", WithService(R"("kind": "radio", "id": "E2O1", "subChannel": 1, "bitRate": 128)" + kLabel),
                "services[0].id: \"E2O1\" is no number"},
        BadCase{"rate", WithService(R"("kind": "radio", "id": 1, "subChannel": 1, "bitRate": 130)" + kLabel),
                "130 kbit/s is no layer II rate"},
        BadCase{"pad", WithService(kRadio + kLabel + R"(, "padBytes": 150)"), "with 150 bytes of PAD"},
        BadCase{"padAfterAChange",
                WithService(kRadio + kLabel + R"(, "padBytes": 40, "changes": [{"at": 1, "bitRate": 112}])"),
                "112 kbit/s is no layer II rate"},
        BadCase{"texts", WithService(kRadio + kLabel + R"(, "texts": [{"text": "a"}])"),
                "services[0].texts: need padBytes"},
        BadCase{
            "textLength",
            WithService(kRadio + kLabel + R"(, "padBytes": 40, "texts": [{"text": ")" + std::string(129, 'x') + "\"}]"),
            "texts[0].text: "},
        BadCase{"labelLength", WithService(kRadio + R"(, "label": {"text": "SEVENTEEN LETTERS"})"),
                "label.text: \"SEVENTEEN LETTERS\" takes 17 bytes of 16"},
        BadCase{"labelCharset", WithService(kRadio + R"(, "label": {"text": "한강"})"), "that EBU Latin lacks"},
        BadCase{"labelKorean", WithService(kRadio + R"(, "label": {"text": "Grüße", "coding": "korean"})"),
                "that KS X 1001 lacks"},
        BadCase{"slide", WithService(kRadio + kLabel + R"(, "padBytes": 40, "slides": [{"file": "/nowhere/a.jpg"}])"),
                "slides[0].file: /nowhere/a.jpg is not there"},
        BadCase{"protection", WithService(kRadio + kLabel + R"(, "protection": "EEP 5-A")"),
                "protection: \"EEP 5-A\" is neither"},
        BadCase{
            "uep",
            WithService(R"("kind": "dab+", "id": 1, "subChannel": 1, "bitRate": 72, "protection": "UEP 3")" + kLabel),
            "there is no UEP profile of 72 kbit/s"},
        BadCase{"full", WithService(R"("kind": "stream data", "id": 1, "subChannel": 1, "bitRate": 1200)" + kLabel),
                "the ensemble is full: 900 of 864"},
        BadCase{"clock", R"({"clock": "yesterday", "ensembles": []})", "clock: \"yesterday\" is no time"},
        BadCase{"melody", WithService(kRadio + kLabel + R"(, "sound": {"melody": "hum"})"),
                "sound.melody: \"hum\" is none of"},
        BadCase{"picture",
                WithService(R"("kind": "television", "id": 1, "subChannel": 1, "bitRate": 544, "video": {"width": 384,
                            "height": 288, "framesPerSecond": 30})" +
                            kLabel),
                "more than level 1.3 allows"}),
    [](const auto& value) { return std::string(value.param.name); });

TEST(Description, TheClockCountsFromTheEpoch) {
    const std::string json = R"({"clock": "2026-05-05T19:29:50", "ensembles": [{"block": "8A", "id": 1,
                                "label": {"text": "T"}}]})";
    EXPECT_EQ(headend::ParseDescription(json, "x", {}).clock, 1778009390); // date -u -d 2026-05-05T19:29:50 +%s
}

TEST(Description, TheDemoHasThreeTelevisionAndFourRadioServices) {
    const auto demo = headend::ParseDescription(headend::DemoDescription(), "demo", {});
    EXPECT_EQ(demo.ensembles.size(), 3u);
    int television = 0;
    int radio = 0;
    for (const auto& ensemble : demo.ensembles) {
        for (const auto& service : ensemble.services) {
            television += service.kind == headend::ServiceKind::kTelevision ? 1 : 0;
            radio += service.kind == headend::ServiceKind::kRadio ? 1 : 0;
        }
    }
    EXPECT_EQ(television, 3);
    EXPECT_EQ(radio, 4);
}

TEST(Multiplex, PlacesOfSubChannelsAndTheirProtection) {
    const auto description = headend::ParseDescription(
        R"({"ensembles": [{"block": "12A", "id": 1, "label": {"text": "T"}, "services": [
            {"kind": "television", "id": 1, "label": {"text": "A"}, "subChannel": 1, "bitRate": 544},
            {"kind": "radio", "id": 2, "label": {"text": "B"}, "subChannel": 2, "bitRate": 192, "protection": "UEP 3"},
            {"kind": "radio", "id": 3, "label": {"text": "C"}, "subChannel": 63, "bitRate": 64, "protection": "EEP 2-B",
             "sound": {"sampleRate": 24000, "channels": 1}}]}]})",
        "x", {});
    const auto configurations = headend::MakeConfigurations(description.ensembles[0]);
    const auto& services = configurations.at(0).services;
    ASSERT_EQ(services.size(), 3u);
    EXPECT_EQ(services[0].entry.size, 408);
    EXPECT_EQ(services[0].protectionField, 0b100010);
    EXPECT_EQ(services[1].entry.startAddress, 408);
    EXPECT_EQ(services[1].entry.uepIndex, 45) << "192 kbit/s level 3";
    EXPECT_EQ(services[1].protectionField, 0b010010);
    EXPECT_EQ(services[2].entry.startAddress, 408 + 140);
    EXPECT_EQ(services[2].entry.size, 42);
    EXPECT_EQ(services[2].protectionField, 0b100101);
}

TEST(Multiplex, AReconfigurationMovesWhatComesBehind) {
    const auto description = headend::ParseDescription(
        R"({"seconds": 9, "ensembles": [{"block": "12A", "id": 1, "label": {"text": "T"}, "services": [
            {"kind": "radio", "id": 2, "label": {"text": "B"}, "subChannel": 2, "bitRate": 192,
             "changes": [{"at": 3, "bitRate": 128, "subChannel": 7, "label": {"text": "NEW"}}]},
            {"kind": "radio", "id": 3, "label": {"text": "C"}, "subChannel": 3, "bitRate": 128},
            {"kind": "radio", "id": 4, "label": {"text": "D"}, "subChannel": 4, "bitRate": 128,
             "present": {"from": 6}}]}]})",
        "x", {});
    const auto configurations = headend::MakeConfigurations(description.ensembles[0]);
    ASSERT_GE(configurations.size(), 3u);
    EXPECT_EQ(configurations[0].services.size(), 2u);
    EXPECT_EQ(configurations[0].services[1].entry.startAddress, 144);
    EXPECT_EQ(configurations[1].fromFrame, 125);
    EXPECT_EQ(configurations[1].services[0].subChannel, 7);
    EXPECT_EQ(configurations[1].services[0].label.text, "NEW");
    EXPECT_EQ(configurations[1].services[1].entry.startAddress, 96);
    EXPECT_EQ(configurations[2].services.size(), 3u);
}

} // namespace
