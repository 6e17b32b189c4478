// SPDX-License-Identifier: MIT
#include "library/one_way_distances.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace korvalite {

namespace {

using core::DoubleVec3;

constexpr std::size_t kItemsPerChunk = 64;

// Pieces whose bound is above the largest distance by more than this factor are cut further.
constexpr double kTightBound = 1.02;
constexpr int kMostHalvings = 16;

/// How often a piece may be cut further on average. Fewer pieces are larger and need more cuts.
std::uint64_t cutsPerPieceOf(std::uint64_t pieces) {
    constexpr std::uint64_t kCuts = 2'000'000;
    return std::clamp(kCuts / std::max(pieces, std::uint64_t{1}), std::uint64_t{2},
                      std::uint64_t{32});
}

std::array<double, 3> arrayOf(const DoubleVec3& v) {
    return {v.x, v.y, v.z};
}

double largestCoordinate(const Box& box) {
    float largest = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        largest = std::max({largest, std::abs(box.low[axis]), std::abs(box.high[axis])});
    return static_cast<double>(largest);
}

/// The diagonal of a box around both.
double diagonalOf(const Box& a, const Box& b) {
    double square = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double length = static_cast<double>(std::max(a.high[axis], b.high[axis])) -
                              static_cast<double>(std::min(a.low[axis], b.low[axis]));
        square += length * length;
    }
    return std::sqrt(square);
}

/// A vector of length 1, or 0 if the triangle has no area.
DoubleVec3 normalOf(const TriangleCorners& t) {
    const DoubleVec3 normal = cross(t[1] - t[0], t[2] - t[0]);
    const double length = std::sqrt(dot(normal, normal));
    return length > 0 ? (1 / length) * normal : DoubleVec3{};
}

double degreesBetween(const DoubleVec3& a, const DoubleVec3& b) {
    const DoubleVec3 across = cross(a, b);
    return std::atan2(std::sqrt(dot(across, across)), dot(a, b)) * (180 / std::numbers::pi);
}

/// What all samples of a direction have in common.
struct Setting {
    const SurfaceTree& to;
    double rounding;  // distances up to this are rounding errors of the samples
    double unit;
    double area;   // 0 if all samples weigh the same
    double known;  // a distance that has been found already
    std::uint64_t cutsPerPiece;
};

/// The sums over some samples. Chunks are joined in their order, so that no sum depends on threads.
struct Part {
    double largest = -1;
    double atMost = 0;
    DoubleVec3 largestAt;
    DoubleVec3 offset;
    double weight = 0;
    double squares = 0;
    double angledWeight = 0;
    double angles = 0;
    double largestAngle = 0;
    std::uint64_t count = 0;
    std::vector<WeighedDistance> samples;

    void add(const Part& other) {
        if (other.largest > largest) {
            largest = other.largest;
            largestAt = other.largestAt;
            offset = other.offset;
        }
        atMost = std::max(atMost, other.atMost);
        weight += other.weight;
        squares += other.squares;
        angledWeight += other.angledWeight;
        angles += other.angles;
        largestAngle = std::max(largestAngle, other.largestAngle);
        count += other.count;
        samples.insert(samples.end(), other.samples.begin(), other.samples.end());
    }
};

/// Adds samples to a part. A sample's nearest triangle is where the search for the next one starts.
class Sampler {
public:
    Sampler(const Setting& setting, Part& part) : setting_(setting), part_(part) {}

    void addVertex(const DoubleVec3& place) { static_cast<void>(measure(place)); }

    void addPiece(const Piece& piece, const DoubleVec3& normal) {
        const auto& [a, b, c] = piece.corners;
        const DoubleVec3 middle = (1.0 / 3) * (a + b + c);
        const double distance = measure(middle);
        const double weight = setting_.area > 0 ? piece.area / setting_.area : 1;
        part_.weight += weight;
        part_.squares += weight * distance * distance;
        part_.samples.push_back(
            {static_cast<float>(distance / setting_.unit), static_cast<float>(weight)});
        addAngle(normal, weight);
        addBound(piece, middle, distance);
    }

private:
    double measure(const DoubleVec3& place) {
        const SurfaceTree::Hit hit = setting_.to.nearest(place, triangle_);
        triangle_ = hit.triangle;
        const double exact = std::sqrt(hit.square);
        const double distance = exact <= setting_.rounding ? 0 : exact;
        ++part_.count;
        if (distance > part_.largest) {
            part_.largest = distance;
            part_.largestAt = place;
            part_.offset = hit.offset;
        }
        return distance;
    }

    void addAngle(const DoubleVec3& normal, double weight) {
        const DoubleVec3 other = normalOf(setting_.to.corners(triangle_));
        if (dot(normal, normal) == 0 || dot(other, other) == 0) return;
        const double angle = degreesBetween(normal, other);
        part_.angledWeight += weight;
        part_.angles += weight * angle;
        part_.largestAngle = std::max(part_.largestAngle, angle);
    }

    /// No point of the piece is farther away than the middle and its own distance from that, nor
    /// than the farthest corner from any one triangle.
    [[nodiscard]] double boundOf(const TriangleCorners& corners, const DoubleVec3& middle,
                                 double distance) const {
        double radius = 0;
        for (const DoubleVec3& corner : corners)
            radius = std::max(radius, dot(corner - middle, corner - middle));
        const double bound = distance + std::sqrt(radius);
        if (bound <= part_.atMost) return bound;
        double farthest = 0;
        for (const DoubleVec3& corner : corners)
            farthest = std::max(farthest, setting_.to.nearestOn(triangle_, corner).square);
        return std::min(bound, std::sqrt(farthest));
    }

    /// Where the bound is well above the largest distance, the piece is cut further, and takes more
    /// samples. They only count for the largest distance. Their number is limited, because
    /// distances near 0 have no bound that is near them.
    void addBound(const Piece& piece, const DoubleVec3& middle, double distance,
                  int halvings = kMostHalvings) {
        const double bound = boundOf(piece.corners, middle, distance);
        if (bound <= part_.atMost || bound <= setting_.rounding) return;
        const double largest = std::max(part_.largest, setting_.known);
        const std::uint64_t mostCuts = kFreeCuts + setting_.cutsPerPiece * part_.samples.size();
        if (bound <= kTightBound * largest || halvings == 0 || cuts_ >= mostCuts) {
            part_.atMost = bound;
            return;
        }
        ++cuts_;
        for (const Piece& half : halvesOf(piece)) {
            const auto& [a, b, c] = half.corners;
            const DoubleVec3 place = (1.0 / 3) * (a + b + c);
            addBound(half, place, measure(place), halvings - 1);
        }
    }

    static constexpr std::uint64_t kFreeCuts = 500;

    const Setting& setting_;
    Part& part_;
    std::uint32_t triangle_ = 0;
    std::uint64_t cuts_ = 0;
};

/// Calls addItem(sampler, item) for each item, and adds it all up.
template <typename AddItem>
Part sampleAll(std::size_t items, const Setting& setting, int threads, WorkReport& report,
               AddItem addItem) {
    std::vector<Part> parts((items + kItemsPerChunk - 1) / kItemsPerChunk);
    forEachChunk(parts.size(), threads, [&](std::size_t chunk) {
        const std::size_t from = chunk * kItemsPerChunk;
        const std::size_t end = std::min(from + kItemsPerChunk, items);
        Sampler sampler(setting, parts[chunk]);
        for (std::size_t item = from; item < end; ++item)
            addItem(sampler, item);
        parts[chunk].samples.shrink_to_fit();
        report.add(end - from);
    });
    Part sum;
    std::size_t samples = 0;
    for (const Part& part : parts)
        samples += part.samples.size();
    sum.samples.reserve(samples);
    for (Part& part : parts) {
        sum.add(part);
        part.samples = {};
    }
    return sum;
}

Distances distancesOf(const Part& sum) {
    Distances result;
    result.largest = sum.largest;
    result.atMost = std::max(sum.atMost, sum.largest);
    if (sum.weight > 0) result.rms = std::min(std::sqrt(sum.squares / sum.weight), sum.largest);
    result.largestAt = arrayOf(sum.largestAt);
    result.largestTo = arrayOf(sum.largestAt + sum.offset);
    if (sum.angledWeight > 0) result.meanNormalAngle = sum.angles / sum.angledWeight;
    result.largestNormalAngle = sum.largestAngle;
    result.samples = sum.count;
    return result;
}

}  // namespace

std::vector<std::uint32_t> usedVertices(const SurfaceTree& surface) {
    std::vector<bool> isUsed(surface.vertexCount());
    std::vector<std::uint32_t> used;
    for (const IndexTriple& triangle : surface.triangles()) {
        for (const std::uint32_t vertex : triangle) {
            if (isUsed[vertex]) continue;
            isUsed[vertex] = true;
            used.push_back(vertex);
        }
    }
    return used;
}

OneWay distancesFrom(const SurfaceTree& from, const Pieces& pieces,
                     std::span<const std::uint32_t> vertices, const SurfaceTree& to, int threads,
                     WorkReport& report) {
    constexpr double kRoundings = 16;
    const double largest = std::max(largestCoordinate(from.box()), largestCoordinate(to.box()));
    const double diagonal = diagonalOf(from.box(), to.box());
    Setting setting{to,
                    kRoundings * std::numeric_limits<double>::epsilon() * largest,
                    diagonal > 0 ? diagonal : 1,
                    from.area(),
                    0,
                    cutsPerPieceOf(pieces.count())};
    const auto addVertex = [&](Sampler& sampler, std::size_t item) {
        sampler.addVertex(from.vertex(vertices[item]));
    };
    const auto addPieces = [&](Sampler& sampler, std::size_t item) {
        const DoubleVec3 normal = normalOf(pieces.cornersOf(item));
        pieces.forEachOf(item, [&](const Piece& piece) { sampler.addPiece(piece, normal); });
    };
    Part sum = sampleAll(vertices.size(), setting, threads, report, addVertex);
    setting.known = sum.largest;
    Part inside = sampleAll(pieces.itemCount(), setting, threads, report, addPieces);
    sum.samples = std::exchange(inside.samples, {});
    sum.add(inside);
    return {distancesOf(sum), setting.unit, std::move(sum.samples)};
}

double percentileOf(std::vector<WeighedDistance>& samples, double share) {
    std::ranges::sort(samples, {}, &WeighedDistance::distance);
    double whole = 0;
    for (const WeighedDistance& sample : samples)
        whole += static_cast<double>(sample.weight);
    double sum = 0;
    for (const WeighedDistance& sample : samples) {
        sum += static_cast<double>(sample.weight);
        if (sum >= share * whole) return static_cast<double>(sample.distance);
    }
    return samples.empty() ? 0 : static_cast<double>(samples.back().distance);
}

}  // namespace korvalite
