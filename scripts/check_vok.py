#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks a .Vok file, alone or against the mesh that it was made from.

Usage: scripts/check_vok.py FILE.Vok [--like INPUT.Vok] [--mirror x|y|z]

With --like, the file must still have what the input had: closedness, texture coordinates, mask,
colours. With --mirror, every vertex must have a mirror image. Prints one line per fault and exits
with 1 if there are any; for a sound file, prints one line with its contents.

It implements docs/file-formats.md and shares no code with the tool, so a fault in one does not hide
in the other. As a module, it provides read_vok(), faults() and Mesh.
"""
import argparse
import math
import struct
import sys
from array import array

MAGIC = b"Vokb"
FILE_HEADER_BYTES = 32
BLOCK_HEADER = struct.Struct("<4I")
NO_FOURTH_VERTEX = 0xFFFFFFFF

END, POINTS, FACES4, FACES3 = 0, 10001, 20001, 20003
UVS4, UVS3, MASK, MASK16, COLORS = 25001, 25002, 30001, 30002, 35001
MARKERS = (25000, 30000, 35000)  # no payload, whatever their size field says
# The bytes of an element, and the array code of its parts.
LISTS = {
    POINTS: (12, "f"), FACES4: (16, "I"), FACES3: (12, "I"), UVS4: (32, "f"), UVS3: (24, "f"),
    MASK: (1, "B"), MASK16: (2, "H"), COLORS: (4, "B"),
}
# How far a mirror image may be from its exact position, as a fraction of the mesh's diagonal.
MIRROR_TOLERANCE = 1e-4


class VokError(Exception):
    """The file does not follow the format."""


class Mesh:
    """Flat arrays: x y z per vertex, three indices and three (u, v) per triangle."""

    def __init__(self):
        self.positions = array("f")
        self.triangles = array("I")
        self.uvs = None
        self.mask = None
        self.colors = None

    @property
    def vertex_count(self):
        return len(self.positions) // 3

    @property
    def triangle_count(self):
        return len(self.triangles) // 3

    @property
    def mask_says_something(self):
        return self.mask is not None and len(set(self.mask)) > 1

    def triples(self):
        corners = iter(self.triangles)
        return zip(corners, corners, corners)

    def summary(self):
        blocks = [name for name, block in
                  (("UVs", self.uvs), ("mask", self.mask), ("colours", self.colors))
                  if block is not None]
        text = f"{self.vertex_count} vertices, {self.triangle_count} triangles"
        return ", ".join([text] + blocks)


def list_of(tag, count, payload, offset):
    element_bytes, code = LISTS[tag]
    if len(payload) != count * element_bytes:
        raise VokError(f"block {tag} at byte {offset}: {count} elements need "
                       f"{count * element_bytes} bytes, but it has {len(payload)}")
    values = array(code)
    values.frombytes(payload)
    if sys.byteorder != "little":
        values.byteswap()
    return values


def blocks_of(data):
    """Yields (tag, count, payload, offset) for each block before the end block."""
    offset = FILE_HEADER_BYTES
    while True:
        if offset + BLOCK_HEADER.size > len(data):
            raise VokError(f"byte {offset}: the file ends without an end block")
        tag, size, count, _ = BLOCK_HEADER.unpack_from(data, offset)
        if tag == END:
            if offset + BLOCK_HEADER.size != len(data):
                raise VokError(f"byte {offset + BLOCK_HEADER.size}: bytes after the end block")
            return
        size = BLOCK_HEADER.size if tag in MARKERS else size
        if size < BLOCK_HEADER.size or offset + size > len(data):
            raise VokError(f"block {tag} at byte {offset}: its size is {size}, but "
                           f"{len(data) - offset} bytes are left")
        yield tag, count, data[offset + BLOCK_HEADER.size:offset + size], offset
        offset += size


def split_faces(mesh, faces):
    """Splits quads along the diagonal from first to third corner. Returns a flag per face."""
    is_quad = []
    for i in range(0, len(faces), 4):
        a, b, c, d = faces[i:i + 4]
        is_quad.append(d != NO_FOURTH_VERTEX)
        mesh.triangles.extend((a, b, c, a, c, d) if is_quad[-1] else (a, b, c))
    return is_quad


def split_uvs(uvs, is_quad):
    split = array("f")
    for face, quad in enumerate(is_quad):
        corners = uvs[8 * face:8 * face + 8]
        split.extend(corners[:6])
        if quad:
            split.extend(corners[:2] + corners[4:8])
    return split


def read_vok(path):
    """Reads a whole file; a VokError says what is wrong and at which byte."""
    try:
        with open(path, "rb") as file:
            data = file.read()
    except OSError as error:
        raise VokError(error.strerror) from error
    if len(data) < FILE_HEADER_BYTES or data[:4] != MAGIC:
        raise VokError("no 32-byte file header that starts with Vokb")
    mesh = Mesh()
    is_quad = []
    for tag, count, payload, offset in blocks_of(data):
        if tag not in LISTS:
            continue
        values = list_of(tag, count, payload, offset)
        if tag == POINTS:
            mesh.positions = values
        elif tag == FACES3:
            mesh.triangles = values
        elif tag == FACES4:
            is_quad = split_faces(mesh, values)
        elif tag == UVS3:
            mesh.uvs = values
        elif tag == UVS4:
            mesh.uvs = split_uvs(values, is_quad)
        elif tag == MASK:
            mesh.mask = values
        elif tag == MASK16:
            mesh.mask = array("B", (value >> 8 for value in values))
        else:
            mesh.colors = values
    return mesh


def has_degenerate(mesh):
    return any(a == b or b == c or c == a for a, b, c in mesh.triples())


def is_closed(mesh):
    """Whether every edge is shared by two triangles that traverse it in opposite directions."""
    edges = set()
    for a, b, c in mesh.triples():
        for edge in ((a, b), (b, c), (c, a)):
            if edge in edges:
                return False
            edges.add(edge)
    return all((b, a) in edges for a, b in edges)


def diagonal(mesh):
    axes = [mesh.positions[axis::3] for axis in range(3)]
    return math.dist([min(axis) for axis in axes], [max(axis) for axis in axes])


def vertices_without_mirror(mesh, axis):
    """The number of vertices with no vertex, not even themselves, at their mirror image."""
    tolerance = diagonal(mesh) * MIRROR_TOLERANCE
    points = [tuple(mesh.positions[i:i + 3]) for i in range(0, len(mesh.positions), 3)]
    cells = {}
    for point in points:
        cells.setdefault(tuple(math.floor(c / tolerance) for c in point), []).append(point)
    steps = [(x, y, z) for x in (-1, 0, 1) for y in (-1, 0, 1) for z in (-1, 0, 1)]

    def has_mirror(point):
        image = tuple(-c if i == axis else c for i, c in enumerate(point))
        cell = [math.floor(c / tolerance) for c in image]
        near = (other for step in steps
                for other in cells.get(tuple(c + s for c, s in zip(cell, step)), ()))
        return any(math.dist(image, other) <= tolerance for other in near)

    return sum(not has_mirror(point) for point in points)


def faults_of(mesh):
    """Faults of a mesh on its own."""
    found = []
    if not all(map(math.isfinite, mesh.positions)):
        found.append("a coordinate is not finite")
    if any(index >= mesh.vertex_count for index in mesh.triangles):
        found.append(f"a triangle refers to vertex {max(mesh.triangles)}, but there are only "
                     f"{mesh.vertex_count}")
    if mesh.uvs is not None:
        if len(mesh.uvs) != 6 * mesh.triangle_count:
            found.append(f"UVs for {len(mesh.uvs) // 6} of {mesh.triangle_count} triangles")
        if not all(map(math.isfinite, mesh.uvs)):
            found.append("a UV is not finite")
    if mesh.mask is not None and len(mesh.mask) != mesh.vertex_count:
        found.append(f"{len(mesh.mask)} mask values for {mesh.vertex_count} vertices")
    if mesh.colors is not None and len(mesh.colors) != 4 * mesh.vertex_count:
        found.append(f"{len(mesh.colors) // 4} colours for {mesh.vertex_count} vertices")
    return found


def faults_against(mesh, source):
    """What the mesh has lost compared with the source."""
    found = []
    if mesh.vertex_count > source.vertex_count or mesh.triangle_count > source.triangle_count:
        found.append("it is larger than the mesh that it was made from")
    if has_degenerate(mesh) and not has_degenerate(source):
        found.append("a triangle has a vertex twice")
    if len(set(source.triangles)) == source.vertex_count:
        unused = mesh.vertex_count - len(set(mesh.triangles))
        if unused:
            found.append(f"the indices are not dense: no triangle uses {unused} of the vertices")
    if is_closed(source) and not is_closed(mesh):
        found.append("the input is closed, but this is not")
    for name, before, after in (
            ("UVs", source.uvs is not None, mesh.uvs is not None),
            ("mask", source.mask_says_something, mesh.mask is not None),
            ("colours", source.colors is not None, mesh.colors is not None)):
        if before != after:
            found.append(f"{name}: missing" if before else f"{name}: not in the input")
    return found


def faults(mesh, source=None, mirror=None):
    """All faults of a mesh as texts; `mirror` is None, "x", "y" or "z"."""
    found = faults_of(mesh)
    if source is not None and not found:
        found = faults_against(mesh, source)
    if mirror is not None and not found:
        lonely = vertices_without_mirror(mesh, "xyz".index(mirror))
        if lonely:
            found.append(f"{lonely} vertices have no mirror image in {mirror} = 0")
    return found


def main():
    parser = argparse.ArgumentParser(description="Checks a .Vok file.")
    parser.add_argument("file")
    parser.add_argument("--like", metavar="INPUT", help="the mesh that it was made from")
    parser.add_argument("--mirror", choices="xyz", help="the mesh must be symmetric in this axis")
    arguments = parser.parse_args()
    path = arguments.file
    try:
        mesh = read_vok(path)
        if arguments.like:
            path = arguments.like
            found = faults(mesh, read_vok(path), arguments.mirror)
        else:
            found = faults(mesh, None, arguments.mirror)
    except VokError as error:
        print(f"{path}: {error}")
        return 1
    for text in found:
        print(f"{arguments.file}: {text}")
    if not found:
        print(f"{arguments.file}: {mesh.summary()}: sound")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
