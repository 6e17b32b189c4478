// SPDX-License-Identifier: MIT
//
// Korvalite: simplifies large triangle meshes by quadric-error edge collapse (Garland and Heckbert,
// "Surface Simplification Using Quadric Error Metrics", 1997). Colours, masks, corner UVs and
// mirror symmetry survive.
//
//     korvalite::Options options;
//     options.target = korvalite::Target::percent(10);
//     korvalite::Result result = korvalite::simplify(mesh, options);
//
// Meshes go in as views of the caller's arrays, which are only read during the call, and come out
// as arrays that the caller owns. The same mesh and options give the same result, bit for bit, on
// every system, as long as one thread is used.
//
// Failures are exceptions: Error with a code and a sentence, std::bad_alloc if memory runs out.
// Nothing here ends the process or prints. All functions may be called from several threads at once
// on different objects.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvalite {

/// The version of the library, as "major.minor.patch".
[[nodiscard]] std::string_view version() noexcept;

enum class ErrorCode {
    BadMesh,      // the arrays of a mesh do not fit each other, or hold a value that is not allowed
    BadOption,    // an option is out of its range
    CannotRead,   // a file cannot be opened, or is not what its name says
    CannotWrite,  // a file cannot be created or written in full
    Cancelled,    // the monitor asked for it
};

/// what() is a sentence: what is wrong, where, and what to do about it.
class Error : public std::runtime_error {
public:
    Error(ErrorCode code, const std::string& sentence)
        : std::runtime_error(sentence), code_(code) {}
    [[nodiscard]] ErrorCode code() const noexcept { return code_; }

private:
    ErrorCode code_;
};

/// The fourth index of a triangle among quads.
inline constexpr std::uint32_t kNoVertex = 0xFFFFFFFF;

/// A mesh in arrays of the caller. At most 2^31 - 1 vertices and as many triangle corners.
///
/// Faces are not welded: faces that should be connected must share vertices. UVs may differ between
/// the faces around a vertex, so they have indices of their own.
struct MeshView {
    std::span<const float> positions;        // x, y and z of each vertex, finite
    std::span<const std::uint32_t> faces;    // `verticesPerFace` vertex indices each
    std::uint32_t verticesPerFace = 3;       // 3, or 4; a quad is split from corner 0 to corner 2
    std::span<const std::uint8_t> colors;    // red, green, blue and alpha of each vertex, or empty
    std::span<const std::uint8_t> mask;      // of each vertex, or empty: 255 simplifies freely,
                                             // lower values less, 0 not at all
    std::span<const float> uvs;              // u and v of each UV point, or empty
    std::span<const std::uint32_t> faceUVs;  // an index into them for each entry of `faces`

    [[nodiscard]] std::size_t vertexCount() const { return positions.size() / 3; }
};

/// A triangle mesh that owns its arrays, with the same meaning as in MeshView.
struct Mesh {
    std::vector<float> positions;
    std::vector<std::uint32_t> triangles;  // three vertex indices each
    std::vector<std::uint8_t> colors;
    std::vector<std::uint8_t> mask;
    std::vector<float> uvs;
    std::vector<std::uint32_t> triangleUVs;

    [[nodiscard]] std::size_t vertexCount() const { return positions.size() / 3; }
    [[nodiscard]] std::size_t triangleCount() const { return triangles.size() / 3; }
    [[nodiscard]] MeshView view() const {
        return {positions, triangles, 3, colors, mask, uvs, triangleUVs};
    }
};

/// How far to simplify. A run that keeps symmetry can end one vertex below, because mirrored
/// vertices go in pairs; a target in triangles can be missed by one or two, because the collapse of
/// an edge of a closed surface removes two.
class Target {
public:
    /// A share of the vertices, from 0 to 100. Rounded down.
    static Target percent(float value) { return {Unit::Percent, value, 0}; }
    static Target vertices(std::uint32_t count) { return {Unit::Vertices, 0, count}; }
    static Target triangles(std::uint32_t count) { return {Unit::Triangles, 0, count}; }

    enum class Unit { Percent, Vertices, Triangles };
    [[nodiscard]] Unit unit() const { return unit_; }
    [[nodiscard]] float percentage() const { return percentage_; }  // if that is the unit
    [[nodiscard]] std::uint32_t count() const { return count_; }    // otherwise

    /// How many of the unit to leave of a mesh with this many vertices. A share leaves vertices.
    /// Throws Error(BadOption) if the share is out of its range.
    [[nodiscard]] std::uint32_t countFor(std::uint32_t vertexCount) const;

private:
    Target(Unit unit, float percentage, std::uint32_t count)
        : unit_(unit), percentage_(percentage), count_(count) {}
    Unit unit_;
    float percentage_;
    std::uint32_t count_;
};

/// A mirror plane through the origin.
enum class Symmetry { None, X, Y, Z };  // the axis that is mirrored

struct Options {
    Target target = Target::percent(50);

    /// Collapse mirrored pairs together where the mesh is symmetric.
    Symmetry symmetry = Symmetry::None;
    /// Keep every vertex on an open border where it is. Otherwise borders are simplified along
    /// themselves.
    bool freezeBorder = false;
    /// Refuse collapses that would change the topology: close a hole, or join or separate surfaces.
    bool protectTopology = true;
    /// Refuse collapses that would turn a triangle over.
    bool protectNormals = true;
    /// Weight the error by the area of triangles, so that dense regions lose more vertices.
    bool weightByArea = false;
    /// The weight of colours relative to shape, from 1 (none) to 100, on a logarithmic scale.
    float colorWeight = 50;
    /// More threads are faster, but then the result differs a little from run to run. From 1 to
    /// 1024.
    int threads = 1;
    /// Where to keep a scratch file of about 60 bytes for each collapsed vertex; the system's
    /// folder for temporary files if empty. The run deletes the file.
    std::filesystem::path scratchFolder;
};

enum class Phase { Analysing, Simplifying, Reordering, ChangingLevel, Measuring };

struct Progress {
    Phase phase = Phase::Analysing;
    std::uint64_t done = 0;
    std::uint64_t total = 0;  // 0 if unknown
};

/// Called several times a second or more while a call runs, from any of its threads but never from
/// two at once. Returning false cancels: the call ends soon with an Error. What the monitor throws
/// ends the call in the same way and comes out of it.
using Monitor = std::function<bool(const Progress&)>;

/// How many of the edges that are left each rule holds back. An edge counts once, for the first
/// rule in this order.
struct BlockedEdges {
    std::uint64_t mask = 0;      // an end has mask 0
    std::uint64_t border = 0;    // touches a border that may not move
    std::uint64_t seam = 0;      // touches a UV seam that may not move
    std::uint64_t symmetry = 0;  // its mirror image could not follow
    std::uint64_t noCost = 0;    // no finite position or error, as with huge coordinates
    std::uint64_t flip = 0;      // would turn a triangle over
    std::uint64_t topology = 0;  // would change the topology
};

/// What came out of a simplification, and why.
struct Report {
    std::uint32_t inputVertices = 0;
    std::uint32_t inputTriangles = 0;  // after quads were split
    std::uint32_t asked = 0;           // in vertices, or triangles if the target counts them
    std::uint32_t reached = 0;
    bool missed = false;        // more was left than asked for
    BlockedEdges blockedEdges;  // only if the target was missed
    std::string advice;         // what would let it go on, as a sentence; only if it was missed
};

struct Result {
    Mesh mesh;
    Report report;
};

/// Simplifies a mesh.
[[nodiscard]] Result simplify(const MeshView& mesh, const Options& options = {},
                              const Monitor& monitor = {});

/// A place on a surface that is nearest to some point.
struct SurfacePoint {
    std::array<double, 3> place{};
    double distance = 0;
    std::array<std::uint32_t, 3> triangle{};  // its vertices
};

class SurfaceTree;  // internal

/// A mesh prepared for measuring: finds the nearest place on its triangles, exact to double
/// precision. Triangles without area count as the segments or points that they are; quads are
/// split; vertices without triangles do not count.
///
/// The view's positions must outlive the surface; nothing else of the view is read later. Any
/// number of threads may use a surface at once. It takes about 36 bytes per triangle, and 36 more
/// while it is made; ten million triangles take some seconds.
class Surface {
public:
    /// Throws Error(BadMesh) if the arrays do not fit each other, an index is out of range, a
    /// coordinate is not finite or there are no triangles.
    explicit Surface(const MeshView& mesh, const Monitor& monitor = {});
    Surface(Surface&& other) noexcept;
    Surface& operator=(Surface&& other) noexcept;
    ~Surface();

    /// The nearest place to a point, which must be finite.
    [[nodiscard]] SurfacePoint nearest(const std::array<double, 3>& point) const;

    [[nodiscard]] double area() const;
    /// The volume that the surface encloses: negative if it is inside out, meaningless if it is
    /// open.
    [[nodiscard]] double volume() const;
    /// The diagonal of the box around its triangles.
    [[nodiscard]] double diagonal() const;

private:
    std::unique_ptr<const SurfaceTree> tree_;

    friend struct SurfaceInside;  // internal
};

struct MeasureOptions {
    /// About how many samples to take on each surface, from 1 to 1,000,000,000. Every triangle has
    /// at least one. On a ball, a million samples are a thousandth of its diagonal apart.
    std::uint64_t samples = 1'000'000;
    /// From 1 to 1024. The result does not depend on it.
    int threads = 1;
};

/// How far one surface is from another, in the unit of the coordinates. Each triangle is cut into
/// pieces of nearly equal size. The middle of each piece is a sample, and so is each vertex.
struct Distances {
    double largest = 0;       // of all samples
    double atMost = 0;        // no point of the surface, sample or not, is farther away than this
    double rms = 0;           // over the area
    double percentile95 = 0;  // 95 % of the area is within this
    std::array<double, 3> largestAt{};  // the sample with the largest distance
    std::array<double, 3> largestTo{};  // the place nearest to it
    double meanNormalAngle = 0;         // between normals, in degrees, over the area; triangles
    double largestNormalAngle = 0;      // without area do not count
    std::uint64_t samples = 0;
};

struct Measurement {
    Distances fromAToB;
    Distances fromBToA;

    // Both directions together: the larger value, or the value over the area of both.
    double largest = 0;
    double atMost = 0;
    double rms = 0;
    double percentile95 = 0;

    double areaA = 0;
    double areaB = 0;
    double volumeA = 0;  // see Surface
    double volumeB = 0;
    double diagonalA = 0;
};

/// Measures how far two surfaces are apart. Takes up to 32 bytes for each of the `samples`.
///
/// The largest distance can be missed by a little, because it may be between the samples; the true
/// one is from `largest` to `atMost`, which are a few percent apart unless both are near 0 or the
/// samples are few. (The sampling is in the manner of Cignoni, Rocchini and Scopigno, "Metro:
/// Measuring Error on Simplified Surfaces", 1998. The bound follows from the distance to one
/// triangle being largest at a corner of the piece, and from no distance changing faster than the
/// point moves.) Distances that are no larger than the rounding errors of the samples count as 0.
[[nodiscard]] Measurement measure(const Surface& a, const Surface& b,
                                  const MeasureOptions& options = {}, const Monitor& monitor = {});
[[nodiscard]] Measurement measure(const MeshView& a, const MeshView& b,
                                  const MeasureOptions& options = {}, const Monitor& monitor = {});

/// The distance of each vertex of a mesh, used or not, from a surface. Throws as Surface does,
/// except that the mesh may be without triangles.
[[nodiscard]] std::vector<float> vertexDistances(const MeshView& mesh, const Surface& surface,
                                                 int threads = 1, const Monitor& monitor = {});

/// A mesh with the record of all collapses, which can be taken to any level of detail and back
/// without computing anything again (Hoppe, "Progressive Meshes", 1996). One thread at a time may
/// use an object.
class ProgressiveMesh {
public:
    /// Simplifies down to the options' target, which becomes the coarsest level.
    [[nodiscard]] static ProgressiveMesh build(const MeshView& mesh, const Options& options = {},
                                               const Monitor& monitor = {});

    /// Reads a `.kvm` file, as written by save or by the tool.
    [[nodiscard]] static ProgressiveMesh load(const std::filesystem::path& path);

    /// Writes a `.kvm` file at the current level. An incomplete file is deleted; if the file cannot
    /// be opened, an older one of that name stays.
    void save(const std::filesystem::path& path);

    ProgressiveMesh(ProgressiveMesh&& other) noexcept;
    ProgressiveMesh& operator=(ProgressiveMesh&& other) noexcept;
    ~ProgressiveMesh();

    /// The report of build; empty after load.
    [[nodiscard]] const Report& report() const;

    /// The finest level, and the current one. The current level after build is the coarsest.
    [[nodiscard]] std::uint32_t finestVertexCount() const;
    [[nodiscard]] std::uint32_t finestTriangleCount() const;
    [[nodiscard]] std::uint32_t vertexCount() const;
    [[nodiscard]] std::uint32_t triangleCount() const;

    /// Goes to the level that is nearest to the target without passing it, and returns its mesh.
    [[nodiscard]] Mesh level(const Target& target, const Monitor& monitor = {});

    /// Goes to that level, and measures how far it is from the finest one, which is A. Holds both
    /// in memory for that. Throws Error(BadMesh) if the level has no triangles.
    [[nodiscard]] Measurement measureLevel(const Target& target, const MeasureOptions& options = {},
                                           const Monitor& monitor = {});

private:
    struct State;
    explicit ProgressiveMesh(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

/// Faults and oddities of a mesh. Any view can be checked, even one that simplify refuses.
///
/// A triangle with a vertex index out of range counts only as bad and uses no vertices; with only a
/// UV index out of range, it counts everywhere else too. A triangle that has a vertex twice counts
/// only as degenerate, but uses its vertices.
struct MeshCheck {
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;  // after quads are split

    // What simplify refuses.
    std::uint64_t nonFiniteVertices = 0;
    std::uint64_t badTriangles = 0;  // have an index of a vertex or UV point that is out of range

    std::uint64_t components = 0;           // of triangles that share vertices
    std::uint64_t borderEdges = 0;          // only one triangle
    std::uint64_t borderLoops = 0;          // connected sets of border edges
    std::uint64_t nonManifoldEdges = 0;     // more than two triangles
    std::uint64_t nonManifoldVertices = 0;  // the triangles around form more than one fan, joined
                                            // by edges of two triangles; both ends of every
                                            // non-manifold edge are among them
    std::uint64_t flippedEdges = 0;         // their two triangles have opposite windings
    std::uint64_t degenerateTriangles = 0;  // have a vertex twice, or no area
    std::uint64_t duplicateTriangles = 0;   // the same three vertices as an earlier one, in any
                                            // order
    std::uint64_t unusedVertices = 0;
    std::uint64_t repeatedPositions = 0;  // vertices at exactly the same place as an earlier one
    std::uint64_t seamEdges = 0;          // of two triangles whose UVs differ at an end of it

    /// The lowest of each in ascending order, at most kMostPlaces: indices of vertices, or of
    /// triangles after quads are split. An edge counts as the first triangle that has it, and a
    /// triangle is listed once for all its edges.
    static constexpr std::size_t kMostPlaces = 10;
    struct Places {
        std::vector<std::uint32_t> nonFiniteVertices;
        std::vector<std::uint32_t> badTriangles;
        std::vector<std::uint32_t> borderEdges;
        std::vector<std::uint32_t> nonManifoldEdges;
        std::vector<std::uint32_t> nonManifoldVertices;
        std::vector<std::uint32_t> flippedEdges;
        std::vector<std::uint32_t> degenerateTriangles;
        std::vector<std::uint32_t> duplicateTriangles;
        std::vector<std::uint32_t> unusedVertices;
        std::vector<std::uint32_t> repeatedPositions;
    } places;

    /// About how much memory simplify would take for this mesh, in bytes, on the high side.
    /// Includes an output as large as the input, but not the caller's arrays. For one thread; each
    /// further one takes 3 bytes per vertex.
    std::uint64_t memoryBytes = 0;

    /// Whether simplify accepts the mesh.
    [[nodiscard]] bool isUsable() const { return nonFiniteVertices == 0 && badTriangles == 0; }
    [[nodiscard]] bool isClosed() const { return borderEdges == 0; }
};

/// Checks a mesh. Throws an Error only if the sizes of its arrays do not fit each other. Takes
/// about 36 bytes per triangle, 48 with UVs, and 8 per vertex; or 16 per vertex if that is more.
[[nodiscard]] MeshCheck check(const MeshView& mesh);

}  // namespace korvalite
