// SPDX-License-Identifier: MIT
#include "korva/files/stl/soup_welder.h"

#include "korva/files/imported_mesh.h"

#include <algorithm>
#include <utility>

namespace korva {

namespace {

static_assert(PointTable::kBatch % 3 == 0);

}  // namespace

SoupWelder::SoupWelder(std::size_t triangles) {
    // A closed surface has half as many vertices as triangles; borders need a few more.
    const std::size_t vertices = triangles / 2 + triangles / 32 + PointTable::kBatch;
    table_.reserve(vertices);
    mesh_.positions.reserve(3 * vertices);
    mesh_.triangles.reserve(3 * triangles + PointTable::kBatch);
}

bool SoupWelder::add(const float* corners) {
    if (mesh_.triangles.size() + waitingFloats_ / 3 + 3 > kMostElements) return false;
    std::copy_n(corners, 9, &waiting_[waitingFloats_]);
    waitingFloats_ += 9;
    if (waitingFloats_ == waiting_.size()) flush();
    return true;
}

korvalite::Mesh SoupWelder::take() {
    flush();
    return std::move(mesh_);
}

void SoupWelder::flush() {
    const std::size_t corners = waitingFloats_ / 3;
    const std::size_t done = mesh_.triangles.size();
    mesh_.triangles.resize(done + corners);
    mesh_.positions.resize(3 * (table_.size() + corners));
    table_.findOrAdd(mesh_.positions.data(), {waiting_.data(), waitingFloats_},
                     mesh_.triangles.data() + done);
    mesh_.positions.resize(std::size_t{3} * table_.size());
    waitingFloats_ = 0;
}

}  // namespace korva
