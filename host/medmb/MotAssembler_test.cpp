#include <gtest/gtest.h>

#include "host/medmb/MotAssembler.h"
#include "tests/medmb/PadParts.h"

namespace medmb {
namespace {

using namespace medmb_test;

std::optional<MotObject> PushGroup(MotAssembler& assembler, const ByteVector& bytes) {
    const auto group = wire::ParseMscDataGroup(bytes);
    return group ? assembler.Push(*group) : std::nullopt;
}

TEST(MotAssembler, HeaderAndSegmentsInAnyOrder) {
    const Sent sent = MakeObject(1, "a.jpg", Body(1, 450));
    std::vector<ByteVector> groups = sent.body;
    groups.push_back(sent.header[0]);
    for (std::size_t turn = 0; turn < groups.size(); ++turn) {
        MotAssembler assembler;
        std::rotate(groups.begin(), groups.begin() + 1, groups.end());
        for (std::size_t i = 0; i + 1 < groups.size(); ++i)
            EXPECT_FALSE(PushGroup(assembler, groups[i]));
        const auto object = PushGroup(assembler, groups.back());
        ASSERT_TRUE(object);
        EXPECT_EQ(object->Name(), "a.jpg");
        EXPECT_EQ(object->body, Body(1, 450));
    }
}

TEST(MotAssembler, SeveralObjectsAtOnce) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
        EXPECT_FALSE(PushGroup(assembler, b.body[i]));
    }
    EXPECT_EQ(PushGroup(assembler, b.body[3])->Name(), "b.jpg");
    EXPECT_EQ(PushGroup(assembler, a.body[3])->Name(), "a.jpg");
}

TEST(MotAssembler, EachObjectOnceUntilAnotherCameBetween) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    const auto send = [&](const Sent& sent) {
        int count = 0;
        for (const auto& part : {sent.header, sent.body})
            for (const ByteVector& group : part)
                count += PushGroup(assembler, group) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(send(a), 1);
    EXPECT_EQ(send(a), 0);
    EXPECT_EQ(send(b), 1);
    EXPECT_EQ(send(a), 1);
}

TEST(MotAssembler, ABodyOfAnotherSizeThanTheHeaderSaysIsNoObject) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent other = MakeObject(1, "a.jpg", Body(1, 340));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    for (const ByteVector& group : other.body)
        EXPECT_FALSE(PushGroup(assembler, group));
}

TEST(MotAssembler, ANewObjectUnderAnOldIdentifierBeginsAnew) {
    const Sent old = MakeObject(1, "old.jpg", Body(1, 350));
    const Sent now = MakeObject(1, "new.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, old.header[0]));
    EXPECT_FALSE(PushGroup(assembler, old.body[0]));
    EXPECT_FALSE(PushGroup(assembler, now.header[0]));
    std::optional<MotObject> object;
    for (const ByteVector& group : now.body)
        object = PushGroup(assembler, group);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->Name(), "new.jpg");
    EXPECT_EQ(object->body, Body(2, 350));
}

TEST(MotAssembler, TheTailFromBeforeTuningInIsNotMixedWithTheNextTurn) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    EXPECT_FALSE(PushGroup(assembler, a.body[3]));
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    for (const ByteVector& group : b.body)
        (void)PushGroup(assembler, group);
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
    EXPECT_TRUE(PushGroup(assembler, a.body[3]));
}

TEST(MotAssembler, TwoObjectsInterleavedWithTheirHeadersInTheMiddle) {
    const Sent a = MakeObject(1, "a.jpg", Body(1, 350));
    const Sent b = MakeObject(2, "b.jpg", Body(2, 350));
    MotAssembler assembler;
    for (const std::size_t i : {3u, 0u}) {
        EXPECT_FALSE(PushGroup(assembler, a.body[i]));
        EXPECT_FALSE(PushGroup(assembler, b.body[i]));
    }
    EXPECT_FALSE(PushGroup(assembler, b.header[0]));
    EXPECT_FALSE(PushGroup(assembler, b.body[1]));
    EXPECT_FALSE(PushGroup(assembler, a.body[1]));
    EXPECT_EQ(PushGroup(assembler, b.body[2])->Name(), "b.jpg");
    EXPECT_FALSE(PushGroup(assembler, a.header[0]));
    EXPECT_EQ(PushGroup(assembler, a.body[2])->Name(), "a.jpg");
}

TEST(MotAssembler, TheTailOfAnOldObjectDoesNotCostTheNewOneItsTurn) {
    // Every object has the same identifier here, as some encoders do it.
    for (const std::size_t size : {349u, 250u}) {
        const Sent old = MakeObject(1, "old.jpg", Body(1, 350));
        const Sent now = MakeObject(1, "new.jpg", Body(2, size));
        MotAssembler assembler;
        EXPECT_FALSE(PushGroup(assembler, old.body[2]));
        EXPECT_FALSE(PushGroup(assembler, old.body[3]));
        EXPECT_FALSE(PushGroup(assembler, now.header[0]));
        std::optional<MotObject> object;
        for (const ByteVector& group : now.body)
            object = PushGroup(assembler, group);
        ASSERT_TRUE(object) << size;
        EXPECT_EQ(object->Name(), "new.jpg");
        EXPECT_EQ(object->body, Body(2, size));
    }
}

TEST(MotAssembler, ManyUnfinishedObjectsAreBounded) {
    MotAssembler assembler;
    for (int id = 0; id < 1000; ++id)
        EXPECT_FALSE(
            PushGroup(assembler, MakeObject(static_cast<std::uint16_t>(id), "x", Body(id, 8000), 8000 / 2).body[0]));
    const Sent last = MakeObject(999, "last.jpg", Body(999, 8000), 8000 / 2);
    EXPECT_FALSE(PushGroup(assembler, last.header[0]));
    EXPECT_TRUE(PushGroup(assembler, last.body[1]));
}

TEST(MotAssembler, WhatIsRefusedHasAReason) {
    wire::MotHeader header;
    header.contentType = wire::kMotContentImage;
    header.contentSubtype = wire::kMotImageJfif;
    EXPECT_EQ(RefuseSlide(header), "");
    header.contentSubtype = wire::kMotImagePng;
    EXPECT_NE(RefuseSlide(header).find("PNG"), std::string::npos);
    header.contentSubtype = wire::kMotImageJfif;
    header.compressed = true;
    EXPECT_NE(RefuseSlide(header).find("compressed"), std::string::npos);
    header.compressed = false;
    header.contentType = 1;
    EXPECT_NE(RefuseSlide(header), "");
    header.contentType = wire::kMotContentGeneral;
    EXPECT_NE(RefuseSlide(header), "");
    header.mimeType = "image/jpeg";
    EXPECT_EQ(RefuseSlide(header), "");
    header.mimeType = "image/png";
    EXPECT_NE(RefuseSlide(header).find("image/png"), std::string::npos);
}

} // namespace
} // namespace medmb
