// SPDX-License-Identifier: MIT
#include "progressive/permute.h"

#include "base/cache.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace korvalite::core {

namespace {

// Each step along a cycle must load the next index from memory first, so several cycles are walked
// side by side.
constexpr std::size_t kWalks = 16;

/// Permutes one array. `Items` has load(i), store(i, item) and place(i), the item's address.
template <typename Items>
class CycleWalks {
public:
    CycleWalks(Items items, IndexMap& map) : items_(items), map_(map) {}

    void run() {
        std::array<Walk, kWalks> walks;
        std::size_t count = 0;
        while (count < kWalks && begin(walks[count]))
            ++count;
        while (count > 0) {
            for (std::size_t i = 0; i < count;) {
                if (step(walks[i]) || begin(walks[i])) {
                    ++i;
                } else {
                    walks[i] = walks[--count];
                }
            }
        }
        for (std::int32_t& entry : map_)
            entry = ~entry;
    }

private:
    struct Walk {
        typename Items::Item held{};
        std::int32_t to = 0;  // new index of the held item
    };

    [[nodiscard]] std::int32_t& entry(std::int32_t i) { return map_[i]; }

    Walk take(std::int32_t i) {
        const std::int32_t to = entry(i);
        entry(i) = ~to;
        prefetch(&entry(to));
        prefetch(items_.place(to));
        return {items_.load(i), to};
    }

    /// Starts at the first item not yet taken; false if there is none.
    bool begin(Walk& walk) {
        const auto count = static_cast<std::int32_t>(map_.size());
        while (next_ < count && entry(next_) < 0)
            ++next_;
        if (next_ == count) return false;
        walk = take(next_);
        return true;
    }

    /// False at the end of the walk: the item here has already been taken, because this walk or
    /// another one began here.
    bool step(Walk& walk) {
        const std::int32_t here = walk.to;
        if (entry(here) < 0) {
            items_.store(here, walk.held);
            return false;
        }
        const Walk onward = take(here);
        items_.store(here, walk.held);
        walk = onward;
        return true;
    }

    Items items_;
    IndexMap& map_;
    std::int32_t next_ = 0;  // all lower items have been taken
};

template <typename Vector>
struct SingleItems {
    using Item = typename Vector::value_type;

    Vector& items;

    [[nodiscard]] Item* place(std::int32_t i) const { return &items[i]; }
    [[nodiscard]] Item load(std::int32_t i) const { return *place(i); }
    void store(std::int32_t i, const Item& item) const { *place(i) = item; }
};

struct Triples {
    using Item = std::array<std::uint32_t, 3>;

    IndexedArray<std::uint32_t>& words;

    [[nodiscard]] std::uint32_t* place(std::int32_t i) const {
        return &words[3 * static_cast<std::size_t>(i)];
    }
    [[nodiscard]] Item load(std::int32_t i) const {
        const std::uint32_t* const triple = place(i);
        return {triple[0], triple[1], triple[2]};
    }
    void store(std::int32_t i, const Item& triple) const {
        std::copy(triple.begin(), triple.end(), place(i));
    }
};

template <typename Vector>
void permuteItems(Vector& items, IndexMap& map) {
    CycleWalks(SingleItems<Vector>{items}, map).run();
}

}  // namespace

void PermuteTriples(IndexedArray<std::uint32_t>& words, IndexMap& map) {
    CycleWalks(Triples{words}, map).run();
}

void PermuteBits(BitArray& bits, IndexMap& map) {
    const BitArray old = bits;
    for (std::int32_t i = 0; i < bits.count(); ++i) {
        bits.Assign(map[i], old.Test(i));
    }
}

void PermuteVertexRecords(VertexRecords& records, IndexMap& map) {
    permuteItems(records, map);
}

void PermuteWords(IndexedArray<std::uint32_t>& words, IndexMap& map) {
    permuteItems(words, map);
}

void PermuteBytes(IndexedArray<std::uint8_t>& bytes, IndexMap& map) {
    permuteItems(bytes, map);
}

}  // namespace korvalite::core
