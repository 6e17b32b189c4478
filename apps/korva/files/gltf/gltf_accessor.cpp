// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_accessor.h"

#include "korva/files/imported_mesh.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

namespace korva {

namespace {

constexpr std::uint64_t kMostStride = 252;
// Rows without data take memory, but no space in the file.
constexpr std::uint64_t kMostRowsWithoutData = std::uint64_t{1} << 20U;

NumberType typeOf(const GltfItem& item) {
    const std::uint64_t number = item.wholeNeeded("componentType");
    for (const NumberType type : {NumberType::Int8, NumberType::UInt8, NumberType::Int16,
                                  NumberType::UInt16, NumberType::UInt32, NumberType::Float32})
        if (number == gltfCodeOf(type)) return type;
    item.fail("its \"componentType\" " + std::to_string(number) + " is unknown.");
}

std::size_t columnsOf(const GltfItem& item) {
    const std::string type = item.text("type");
    if (type == "SCALAR") return 1;
    if (type == "VEC2") return 2;
    if (type == "VEC3") return 3;
    if (type == "VEC4") return 4;
    item.fail("its \"type\" should be SCALAR, VEC2, VEC3 or VEC4.");
}

/// Points the rows at a buffer view, starting at the "byteOffset" of the item.
void locate(GltfFile& file, const GltfItem& item, std::uint64_t viewIndex, GltfRows& rows) {
    const GltfItem view = file.root().element("bufferViews", viewIndex, "buffer view");
    const std::span<const char> buffer = file.buffer(view.wholeNeeded("buffer"));
    const std::uint64_t viewBegin = view.whole("byteOffset").value_or(0);
    const std::uint64_t viewBytes = view.wholeNeeded("byteLength");
    if (viewBegin > buffer.size() || viewBytes > buffer.size() - viewBegin)
        view.fail("it goes beyond the end of its buffer.");
    const std::uint64_t rowBytes = rows.columns * byteSizeOf(rows.type);
    std::uint64_t stride = view.whole("byteStride").value_or(0);
    if (stride == 0) stride = rowBytes;
    if (stride < rowBytes || stride > kMostStride)
        view.fail("its \"byteStride\" does not fit " + item.place() + '.');
    const std::uint64_t begin = item.whole("byteOffset").value_or(0);
    if (begin > viewBytes ||
        (rows.count > 0 && (rows.count - 1) * stride + rowBytes > viewBytes - begin))
        item.fail("it goes beyond the end of its buffer view.");
    rows.bytes = buffer.data() + viewBegin + begin;
    rows.stride = static_cast<std::size_t>(stride);
}

std::uint32_t indexAt(const GltfRows& indices, std::size_t row) {
    return withTypeOf(indices.type, [&](auto zero) {
        return static_cast<std::uint32_t>(
            loadNumber<decltype(zero)>(indices.bytes + row * indices.stride));
    });
}

void requireAscending(const GltfItem& item, const GltfAccessor& accessor) {
    for (std::size_t i = 0; i < accessor.changed.count; ++i) {
        const std::uint32_t index = indexAt(accessor.changed, i);
        if (index >= accessor.rows.count || (i > 0 && index <= indexAt(accessor.changed, i - 1)))
            item.fail("its sparse indices are out of range or not in ascending order.");
    }
}

void openSparse(GltfFile& file, const GltfItem& sparse, GltfAccessor& accessor) {
    const std::optional<GltfItem> indices = sparse.object("indices");
    const std::optional<GltfItem> values = sparse.object("values");
    const std::uint64_t count = sparse.wholeNeeded("count");
    if (!indices || !values || count > accessor.rows.count)
        sparse.fail(
            "it should have indices and values, and no more of them than the accessor has rows.");
    accessor.changes = accessor.rows;
    accessor.changes.count = accessor.changed.count = static_cast<std::size_t>(count);
    accessor.changed.columns = 1;
    accessor.changed.type = typeOf(*indices);
    if (accessor.changed.type == NumberType::Float32)
        indices->fail("they should be whole numbers.");
    locate(file, *indices, indices->wholeNeeded("bufferView"), accessor.changed);
    locate(file, *values, values->wholeNeeded("bufferView"), accessor.changes);
    requireAscending(sparse, accessor);
}

template <typename To, bool isNormalised, typename Value>
To converted(Value value) {
    if constexpr (isNormalised && std::is_integral_v<Value>) {
        const float most = static_cast<float>(std::numeric_limits<Value>::max());
        return std::max(static_cast<float>(value) / most, -1.0F);
    } else {
        return static_cast<To>(value);
    }
}

template <typename To, bool isNormalised, typename Value>
void readPlain(const GltfRows& rows, std::size_t begin, std::size_t count, To* to) {
    const char* from = rows.bytes + begin * rows.stride;
    if (std::is_same_v<To, Value> && rows.stride == rows.columns * sizeof(Value)) {
        std::memcpy(to, from, count * rows.stride);
        return;
    }
    for (; count > 0; --count, from += rows.stride) {
        for (std::size_t column = 0; column < rows.columns; ++column)
            *to++ = converted<To, isNormalised>(loadNumber<Value>(from + column * sizeof(Value)));
    }
}

template <typename To>
void readRows(const GltfRows& rows, std::size_t begin, std::size_t count, To* to) {
    if (rows.bytes == nullptr) {
        std::fill_n(to, count * rows.columns, To{});
        return;
    }
    withTypeOf(rows.type, [&](auto zero) {
        using Value = decltype(zero);
        if constexpr (std::is_same_v<To, float>) {
            if (rows.isNormalised) {
                readPlain<To, true, Value>(rows, begin, count, to);
                return;
            }
        }
        // Indices are never floats, and casting a float to an index can be undefined.
        if constexpr (std::is_same_v<To, float> || std::is_integral_v<Value>)
            readPlain<To, false, Value>(rows, begin, count, to);
    });
}

/// The position of the first sparse index that is at or past the row.
std::size_t firstChanged(const GltfRows& changed, std::size_t row) {
    std::size_t low = 0;
    std::size_t high = changed.count;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (indexAt(changed, middle) < row)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

template <typename To>
void readAccessor(const GltfAccessor& accessor, std::size_t begin, std::size_t count, To* to) {
    readRows(accessor.rows, begin, count, to);
    for (std::size_t i = firstChanged(accessor.changed, begin); i < accessor.changed.count; ++i) {
        const std::size_t row = indexAt(accessor.changed, i);
        if (row >= begin + count) break;
        readRows(accessor.changes, i, 1, to + (row - begin) * accessor.rows.columns);
    }
}

}  // namespace

GltfAccessor openGltfAccessor(GltfFile& file, std::uint64_t index) {
    const GltfItem item = file.root().element("accessors", index, "accessor");
    GltfAccessor accessor;
    accessor.place = item.place();
    GltfRows& rows = accessor.rows;
    rows.type = typeOf(item);
    rows.columns = columnsOf(item);
    rows.isNormalised = item.flag("normalized");
    const std::uint64_t count = item.wholeNeeded("count");
    if (count > kMostElements) item.fail("it has more than 2147483647 elements.");
    rows.count = static_cast<std::size_t>(count);
    if (const std::optional<std::uint64_t> view = item.whole("bufferView"))
        locate(file, item, *view, rows);
    else if (count > kMostRowsWithoutData)
        item.fail("it has " + std::to_string(count) + " elements, but no data.");
    if (const std::optional<GltfItem> sparse = item.object("sparse"))
        openSparse(file, *sparse, accessor);
    return accessor;
}

void readGltfFloats(const GltfAccessor& accessor, std::size_t begin, std::size_t count, float* to) {
    readAccessor(accessor, begin, count, to);
}

void readGltfIndices(const GltfAccessor& accessor, std::size_t begin, std::size_t count,
                     std::uint32_t* to) {
    readAccessor(accessor, begin, count, to);
}

}  // namespace korva
