// Puts MOT objects together from their data groups: header and body segments in any order, repeated, of several objects
// at once (EN 301 234, header mode).
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>

#include "host/wire/Mot.h"
#include "host/wire/MscDataGroup.h"

namespace medmb {

struct MotObject {
    wire::MotHeader header;
    wire::ByteVector body;

    // The content name in UTF-8.
    [[nodiscard]] std::string Name() const;
};

// Whether its header calls it a picture, of whatever kind.
[[nodiscard]] bool IsImage(const wire::MotHeader& header);

// Why a complete object is no picture for the slideshow; empty when it is one.
[[nodiscard]] std::string RefuseSlide(const wire::MotHeader& header);

class MotAssembler {
public:
    // The object that this group completed. An object that is repeated is handed out once, until another one came between.
    [[nodiscard]] std::optional<MotObject> Push(const wire::MscDataGroup& group);
    void Reset() { *this = MotAssembler(); }

    // Several objects may be under way; beyond these limits the one that was silent longest is given up.
    static constexpr std::size_t kMaxObjects = 8;
    static constexpr std::size_t kMaxBytes = 4 * 1024 * 1024;

private:
    struct Segment {
        wire::ByteVector data;
        bool isLast = false;
        std::uint64_t heardAt = 0; // number of its group
    };
    struct Parts {
        std::map<int, Segment> segments;
        std::size_t bytes = 0;

        // False when the segment contradicts what is known: the object has changed under the same identifier.
        [[nodiscard]] bool Add(const wire::MscDataGroup& group, wire::ByteSpan data, std::uint64_t now);
        // Drops the segments heard before that group.
        void Forget(std::uint64_t before);
        [[nodiscard]] bool Complete() const;
        [[nodiscard]] wire::ByteVector Join() const;
        // The group of its oldest segment; 0 without any.
        [[nodiscard]] std::uint64_t OldestHeardAt() const;
    };
    struct Object {
        std::uint16_t transportId = 0;
        Parts header;
        Parts body;
        std::uint64_t begunAt = 0; // number of its first group
        std::uint64_t heardAt = 0; // and of its latest
    };

    [[nodiscard]] Object& Find(std::uint16_t transportId);
    [[nodiscard]] std::optional<MotObject> TryFinish(Object& object);
    static void ForgetOldVersion(Object& object, bool isHeader);
    void Limit();

    std::list<Object> objects;             // the one heard last is in front
    std::uint64_t groups = 0;              // pushed so far
    std::uint64_t lastFinishedBegunAt = 0; // of the object finished last
    std::optional<std::uint16_t> lastId;
    wire::ByteVector lastBody;
    std::string lastName;
};

} // namespace medmb
