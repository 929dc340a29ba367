// The objects of ISO/IEC 14496-1 as they travel in a T-DMB transport stream (ETSI TS 102 428): the initial object
// descriptor in the programme map, and the object descriptor updates in their own sections.
#pragma once

#include "host/wire/Mpeg4Descriptors.h"

namespace wire {

namespace detail {

// The ES descriptors among `rest`; other descriptors are passed over. Nothing when any of them is damaged.
[[nodiscard]] inline std::optional<std::vector<EsDescriptor>> ParseEsList(std::span<const std::uint8_t> rest) {
    std::vector<EsDescriptor> streams{};
    while (!rest.empty()) {
        const auto inner = Mp4Descriptor::Take(rest);
        if (!inner)
            return std::nullopt;
        if (inner->tag != kTagEsDescriptor)
            continue;
        auto es = EsDescriptor::Parse(inner->body);
        if (!es)
            return std::nullopt;
        streams.push_back(std::move(*es));
    }
    return streams;
}

inline void PutEsList(std::vector<std::uint8_t>& out, const std::vector<EsDescriptor>& streams) {
    for (const EsDescriptor& es : streams)
        Mp4Descriptor::Put(out, kTagEsDescriptor, es.Write());
}

} // namespace detail

// ObjectDescriptor, 7.2.6.3: one audio or visual object and its streams. With a URL it has none of its own.
struct ObjectDescriptor {
    std::uint16_t id = 0; // 10 bits
    std::string url{};
    std::vector<EsDescriptor> streams{};

    bool operator==(const ObjectDescriptor&) const = default;

    [[nodiscard]] static std::optional<ObjectDescriptor> Parse(std::span<const std::uint8_t> body) {
        if (body.size() < 2)
            return std::nullopt;
        const unsigned head = Get16(body, 0);
        ObjectDescriptor object;
        object.id = static_cast<std::uint16_t>(head >> 6);
        std::span<const std::uint8_t> rest = body.subspan(2);
        if ((head & 0x20) != 0) {
            if (rest.empty() || rest.size() - 1 < rest[0])
                return std::nullopt;
            object.url.assign(rest.begin() + 1, rest.begin() + 1 + rest[0]);
            return object;
        }
        auto streams = detail::ParseEsList(rest);
        if (!streams)
            return std::nullopt;
        object.streams = std::move(*streams);
        return object;
    }

    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> out;
        out.reserve(64);
        Append16(out, static_cast<unsigned>(id) << 6 | (url.empty() ? 0 : 0x20) | 0x1F);
        if (url.empty()) {
            detail::PutEsList(out, streams);
        } else {
            out.push_back(static_cast<std::uint8_t>(url.size()));
            out.insert(out.end(), url.begin(), url.end());
        }
        return out;
    }
};

// ObjectDescriptorUpdate, 7.2.5.5.2: the objects that an object descriptor access unit brings. Other commands
// in the same access unit are passed over.
struct ObjectDescriptorUpdate {
    std::vector<ObjectDescriptor> objects{};

    // `bytes` is the access unit: a list of commands.
    [[nodiscard]] static std::optional<ObjectDescriptorUpdate> Parse(std::span<const std::uint8_t> bytes) {
        ObjectDescriptorUpdate update;
        while (!bytes.empty()) {
            const auto command = Mp4Descriptor::Take(bytes);
            if (!command)
                return std::nullopt;
            if (command->tag != kTagObjectDescriptorUpdate)
                continue;
            std::span<const std::uint8_t> rest = command->body;
            while (!rest.empty()) {
                const auto inner = Mp4Descriptor::Take(rest);
                if (!inner)
                    return std::nullopt;
                if (inner->tag != kTagObjectDescriptor)
                    continue;
                auto object = ObjectDescriptor::Parse(inner->body);
                if (!object)
                    return std::nullopt;
                update.objects.push_back(std::move(*object));
            }
        }
        return update;
    }

    // The access unit with this one command.
    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> body;
        for (const ObjectDescriptor& object : objects)
            Mp4Descriptor::Put(body, kTagObjectDescriptor, object.Write());
        std::vector<std::uint8_t> out;
        Mp4Descriptor::Put(out, kTagObjectDescriptorUpdate, body);
        return out;
    }
};

// The IOD_descriptor of the programme map (ISO/IEC 13818-1 2.6.40) with its InitialObjectDescriptor
// (14496-1 7.2.6.4).
struct IodDescriptor {
    std::uint8_t scope = 0x10; // 0x10: the label is unique in the programme
    std::uint8_t label = 0;
    std::uint16_t id = 0; // object descriptor id, 10 bits
    bool inlineProfiles = false;
    std::uint8_t objectProfile = 0xFF;
    std::uint8_t sceneProfile = 0xFF;
    std::uint8_t audioProfile = 0xFF;
    std::uint8_t visualProfile = 0xFF;
    std::uint8_t graphicsProfile = 0xFF;
    std::vector<EsDescriptor> streams{};

    bool operator==(const IodDescriptor&) const = default;

    // The body of the programme map's descriptor. One that refers to a URL has nothing to tune to: nothing.
    [[nodiscard]] static std::optional<IodDescriptor> Parse(std::span<const std::uint8_t> body) {
        if (body.size() < 2)
            return std::nullopt;
        IodDescriptor iod;
        iod.scope = body[0];
        iod.label = body[1];
        std::span<const std::uint8_t> rest = body.subspan(2);
        const auto inner = Mp4Descriptor::Take(rest);
        if (!inner || inner->tag != kTagInitialObjectDescriptor || inner->body.size() < 7)
            return std::nullopt;
        const unsigned head = Get16(inner->body, 0);
        if ((head & 0x20) != 0)
            return std::nullopt;
        iod.id = static_cast<std::uint16_t>(head >> 6);
        iod.inlineProfiles = (head & 0x10) != 0;
        iod.objectProfile = inner->body[2];
        iod.sceneProfile = inner->body[3];
        iod.audioProfile = inner->body[4];
        iod.visualProfile = inner->body[5];
        iod.graphicsProfile = inner->body[6];
        auto streams = detail::ParseEsList(inner->body.subspan(7));
        if (!streams)
            return std::nullopt;
        iod.streams = std::move(*streams);
        return iod;
    }

    [[nodiscard]] std::vector<std::uint8_t> Write() const {
        std::vector<std::uint8_t> inner;
        inner.reserve(64);
        Append16(inner, static_cast<unsigned>(id) << 6 | (inlineProfiles ? 0x10 : 0) | 0x0F);
        inner.insert(inner.end(), {objectProfile, sceneProfile, audioProfile, visualProfile, graphicsProfile});
        detail::PutEsList(inner, streams);
        std::vector<std::uint8_t> out = {scope, label};
        Mp4Descriptor::Put(out, kTagInitialObjectDescriptor, inner);
        return out;
    }
};

} // namespace wire
