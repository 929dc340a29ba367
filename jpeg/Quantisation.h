// Which quantisation table each component uses: the one in force at the component's first scan (T.81 B.2.4).
#pragma once

#include "jpeg/Frame.h"
#include "jpeg/Status.h"
#include "jpeg/Transform.h"

#include <array>

namespace jpeg {

class ComponentQuantisers {
public:
    // Keeps the tables of the components that `scan` brings for the first time.
    [[nodiscard]] Status Latch(const Frame& frame, const Tables& tables, const ScanHeader& scan, int reduction) {
        for (int i = 0; i < scan.componentCount; ++i) {
            if (const Status status = LatchOne(frame, tables, scan.components[i].component, reduction);
                status != Status::kOk) {
                return status;
            }
        }
        return Status::kOk;
    }

    // For components that no scan brought: they need no table, but one that was never sent refuses the picture.
    [[nodiscard]] Status LatchRest(const Frame& frame, const Tables& tables, int reduction) {
        for (int i = 0; i < frame.componentCount; ++i) {
            if (const Status status = LatchOne(frame, tables, i, reduction); status != Status::kOk) {
                return status;
            }
        }
        return Status::kOk;
    }

    [[nodiscard]] const Dequantiser& Of(int component) const { return dequantisers[component]; }

private:
    [[nodiscard]] Status LatchOne(const Frame& frame, const Tables& tables, int component, int reduction) {
        if (known[component]) {
            return Status::kOk;
        }
        const std::uint8_t id = frame.components[component].quantId;
        if (id >= kTableSlots) {
            return Status::kTableId;
        }
        const QuantTable& table = tables.quant[id];
        if (!table.sent) {
            return Status::kQuantTableMissing;
        }
        dequantisers[component] = MakeDequantiser(table, reduction);
        known[component] = true;
        return Status::kOk;
    }

    std::array<Dequantiser, kMaxComponents> dequantisers;
    std::array<bool, kMaxComponents> known{};
};

} // namespace jpeg
