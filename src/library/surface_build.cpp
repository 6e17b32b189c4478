// SPDX-License-Identifier: MIT
//
// Builds the tree from the top: a node is cut where the areas of the two boxes, each times its
// number of triangles, have the least sum (MacDonald and Booth, "Heuristics for Ray Tracing Using
// Space Subdivision", 1990), tried at the borders of a few bins (Wald, "On Fast Construction of
// SAH-based Bounding Volume Hierarchies", 2007).
#include "library/mesh_view.h"
#include "library/surface_tree.h"

#include <algorithm>
#include <limits>

namespace korvalite {

namespace {

constexpr std::size_t kMostInLeaf = 4;
constexpr std::size_t kBins = 16;
// From here on, nodes are halved: cuts that take only a few triangles off must not go on for ever.
constexpr std::size_t kDeepestCut = 60;

struct Item {
    Box box;
    IndexTriple vertices;

    [[nodiscard]] float middle(std::size_t axis) const {
        return 0.5F * box.low[axis] + 0.5F * box.high[axis];
    }
};
using Items = std::span<Item>;

Box emptyBox() {
    constexpr float kFar = std::numeric_limits<float>::infinity();
    return {{kFar, kFar, kFar}, {-kFar, -kFar, -kFar}};
}

void extend(Box& box, const Box& by) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        box.low[axis] = std::min(box.low[axis], by.low[axis]);
        box.high[axis] = std::max(box.high[axis], by.high[axis]);
    }
}

double lengthOf(const Box& box, std::size_t axis) {
    return static_cast<double>(box.high[axis]) - static_cast<double>(box.low[axis]);
}

double halfAreaOf(const Box& box) {
    const double x = lengthOf(box, 0);
    const double y = lengthOf(box, 1);
    const double z = lengthOf(box, 2);
    return x * y + y * z + z * x;
}

std::vector<Item> gather(const MeshView& mesh) {
    std::vector<Item> items(countTriangles(mesh));
    forEachTriangle(mesh, [&](std::size_t triangle, const auto& corners) {
        Item& item = items[triangle];
        item.box = emptyBox();
        for (std::size_t i = 0; i < 3; ++i) {
            item.vertices[i] = mesh.faces[corners[i]];
            const float* p = &mesh.positions[3 * std::size_t{item.vertices[i]}];
            extend(item.box, {{p[0], p[1], p[2]}, {p[0], p[1], p[2]}});
        }
    });
    return items;
}

/// Bins of equal width along the longest side of the box around the middles.
struct Bins {
    std::size_t axis = 0;
    double low = 0;
    double perLength = 0;  // 0 if all middles are at one place

    explicit Bins(const Box& middles) {
        for (std::size_t other = 1; other < 3; ++other)
            if (lengthOf(middles, other) > lengthOf(middles, axis)) axis = other;
        low = static_cast<double>(middles.low[axis]);
        const double length = lengthOf(middles, axis);
        if (length > 0) perLength = static_cast<double>(kBins) / length;
    }
    [[nodiscard]] std::size_t of(const Item& item) const {
        const double along = (static_cast<double>(item.middle(axis)) - low) * perLength;
        return std::min(static_cast<std::size_t>(along), kBins - 1);
    }
};

/// The last bin before the best cut.
std::size_t bestCut(Items items, const Bins& bins) {
    std::array<std::size_t, kBins> counts{};
    std::array<Box, kBins> boxes{};
    boxes.fill(emptyBox());
    for (const Item& item : items) {
        const std::size_t bin = bins.of(item);
        ++counts[bin];
        extend(boxes[bin], item.box);
    }
    std::array<double, kBins> costAfter{};
    Box box = emptyBox();
    std::size_t count = 0;
    for (std::size_t bin = kBins - 1; bin > 0; --bin) {
        count += counts[bin];
        extend(box, boxes[bin]);
        if (count > 0) costAfter[bin - 1] = static_cast<double>(count) * halfAreaOf(box);
    }
    std::size_t best = 0;
    double least = std::numeric_limits<double>::infinity();
    box = emptyBox();
    count = 0;
    for (std::size_t bin = 0; bin + 1 < kBins; ++bin) {
        count += counts[bin];
        extend(box, boxes[bin]);
        const double cost = static_cast<double>(count) * halfAreaOf(box) + costAfter[bin];
        if (!(cost < least)) continue;
        least = cost;
        best = bin;
    }
    return best;
}

/// How many items go into the first child; moves them to the front.
std::size_t cut(Items items, const Box& middles, std::size_t depth) {
    const Bins bins(middles);
    const std::size_t half = items.size() / 2;
    if (bins.perLength == 0) return half;
    if (depth >= kDeepestCut) {
        const auto isBefore = [&](const Item& a, const Item& b) {
            return a.middle(bins.axis) < b.middle(bins.axis);
        };
        std::nth_element(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(half),
                         items.end(), isBefore);
        return half;
    }
    const std::size_t last = bestCut(items, bins);
    Item* const first = items.data();
    Item* const end = std::partition(first, first + items.size(),
                                     [&](const Item& item) { return bins.of(item) <= last; });
    return static_cast<std::size_t>(end - first);
}

class Builder {
public:
    explicit Builder(WorkReport& report) : report_(report) {}

    void add(Items items, std::size_t depth) {
        Box box = emptyBox();
        Box middles = emptyBox();
        for (const Item& item : items) {
            extend(box, item.box);
            const std::array middle{item.middle(0), item.middle(1), item.middle(2)};
            extend(middles, {middle, middle});
        }
        const std::size_t node = parts.nodes.size();
        parts.nodes.push_back({box, static_cast<std::uint32_t>(parts.triangles.size()),
                               static_cast<std::uint32_t>(items.size())});
        if (items.size() <= kMostInLeaf) {
            addTriangles(items);
            return;
        }
        const std::size_t first = cut(items, middles, depth);
        add(items.first(first), depth + 1);
        parts.nodes[node].next = static_cast<std::uint32_t>(parts.nodes.size());
        parts.nodes[node].count = 0;
        add(items.subspan(first), depth + 1);
    }

    TreeParts parts;

private:
    void addTriangles(Items items) {
        for (const Item& item : items)
            parts.triangles.push_back(item.vertices);
        done_ += items.size();
        constexpr std::size_t kPerReport = 4096;
        if (done_ < kPerReport) return;
        report_.add(done_);
        done_ = 0;
    }

    WorkReport& report_;
    std::size_t done_ = 0;
};

}  // namespace

TreeParts buildTree(const MeshView& mesh, WorkReport& report) {
    std::vector<Item> items = gather(mesh);
    report.add(0);
    Builder builder(report);
    builder.parts.triangles.reserve(items.size());
    builder.add(items, 0);
    items = {};
    builder.parts.nodes.shrink_to_fit();
    return std::move(builder.parts);
}

}  // namespace korvalite
