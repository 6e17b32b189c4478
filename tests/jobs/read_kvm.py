#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads a progressive mesh (.kvm) as its page describes it, and checks every section.

Usage: tests/jobs/read_kvm.py FILE.kvm [--like INPUT.Vok]
       tests/jobs/read_kvm.py --tool KORVALITE INPUT.Vok [KEY=VALUE ...] [INPUT.Vok ...]

With --like, the mesh at its full count must be the input again. With --tool, the executable builds
a .kvm from each input, reordered and not, with the job keys that follow the input; all are checked
against their inputs. Prints one line for each file; ends with 1 at the first fault.

It knows the format from docs/file-formats.md alone and shares no code with the tool.
"""
import collections
import pathlib
import struct
import subprocess
import sys
import tempfile
from array import array

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_vok  # noqa: E402  the independent reader of the other format

HEADER = struct.Struct("<II6f4B5iiIi7B6I")
Header = collections.namedtuple("Header", [
    "reserved", "version", "f0", "f1", "f2", "f3", "f4", "f5", "b0", "b1", "b2", "b3",
    "driver", "border", "target", "asked", "final", "position", "splits", "finish",
    "protect", "finish_step", "area", "colors_handled", "reordered", "cleaned", "uvs_handled",
    "T", "V", "I", "K", "C", "M"])
# Welded UVs may lie this far from those of the input.
UV_TOLERANCE = 0.004


class KvmError(Exception):
    """The file is not as the page describes it."""


def require(holds, what):
    if not holds:
        raise KvmError(what)


class Bytes:
    """A file, read from start to end."""

    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, count, what):
        require(self.at + count <= len(self.data), f"byte {self.at}: the file ends within {what}")
        self.at += count
        return self.data[self.at - count:self.at]

    def items(self, code, count, what):
        values = array(code)
        values.frombytes(self.take(count * values.itemsize, what))
        if sys.byteorder != "little":
            values.byteswap()
        return values

    def u32(self, what):
        return self.items("I", 1, what)[0]

    def list(self, code, what):
        return self.items(code, self.u32(what), what)


class Split:
    """One vertex split record."""

    def __init__(self, source, colors, uvs):
        self.vertex = source.items("i", 1, "a vertex")[0]
        self.position = source.items("f", 3, "a position")
        self.corners = source.list("i", "corners")
        self.removed = source.list("i", "removed triangles")
        self.color = source.take(4, "a colour") if colors else None
        self.uvs, self.corner_uvs, self.pairs = array("f"), array("i"), array("i")
        if uvs:
            self.uvs = source.items("f", 2 * source.u32("UVs"), "UVs")
            self.corner_uvs = source.list("i", "UV indices")
            self.pairs = source.list("i", "UV pairs")


def read_activity(source, count, what):
    bits = source.u32(what)
    require(bits == count, f"{what}: {bits} bits for {count} items")
    packed = source.take((bits + 7) // 8, what)
    active = [packed[i // 8] >> (i % 8) & 1 == 1 for i in range(bits)]
    number = source.u32(what)
    require(number == sum(active), f"{what}: {sum(active)} bits are set, the count says {number}")
    return active


class Kvm:
    """The mesh of a file, and the steps from level to level."""

    def __init__(self, data):
        source = Bytes(data)
        self.header = header = Header(*HEADER.unpack(source.take(HEADER.size, "the header")))
        require(HEADER.size == 99, "the header takes 99 bytes")
        require(header.reserved == 0, "the reserved word is not 0")
        require(header.driver in (1, 2), "not a low-memory driver, so nothing after the header")
        flags = header[8:12] + header[20:27]
        require(all(flag in (0, 1) for flag in flags), "a flag is neither 0 nor 1")

        self.triangles = source.items("I", 3 * header.T, "the triangles")
        vertices = [struct.unpack("<3fi", source.take(16, "the vertices")) for _ in range(header.V)]
        self.positions = [list(vertex[:3]) for vertex in vertices]
        self.partners = [vertex[3] for vertex in vertices]
        self.triangle_active = read_activity(source, header.T, "the triangle activity")
        self.vertex_active = read_activity(source, header.V, "the vertex activity")
        self.colors = [source.take(4, "the colours") for _ in range(header.C)]
        self.mask = source.take(header.M, "the mask")
        self.uv_indices = source.items("I", header.I, "the UV indices")
        self.uvs = source.items("f", 2 * header.K, "the UVs")
        count = source.u32("the splits")
        require(count == header.splits, f"{count} splits, but {header.splits} in the header")
        newest_first = [Split(source, header.colors_handled, header.uvs_handled)
                        for _ in range(count)]
        require(source.at == len(data), f"{len(data) - source.at} bytes after the splits")
        self.splits = newest_first[::-1]
        self.position = header.position

    def check(self):
        header = self.header
        require(0 <= header.position <= header.splits, "no split has the position of the level")
        require(header.final == self.active_vertices(), "the vertex count differs from the header")
        require(header.C in (0, header.V) and header.M in (0, header.V), "attributes per vertex")
        require(header.I in (0, 3 * header.T), "UV indices per corner")
        require(all(v < header.V for v in self.triangles), "a triangle names no existing vertex")
        require(all(k < header.K for k in self.uv_indices), "a corner names no existing UV")
        gone, removed = set(), set()
        for split in self.splits:
            self.check_split(split)
            require(split.vertex not in gone, f"vertex {split.vertex} is removed twice")
            require(removed.isdisjoint(split.removed), "a triangle is removed twice")
            gone.add(split.vertex)
            removed.update(split.removed)
        if header.reordered:
            self.check_numbering()
        self.check_triangles()

    def check_split(self, split):
        header = self.header
        require(0 <= split.vertex < header.V, "the vertex of a split does not exist")
        require(0 <= self.partners[split.vertex] < header.V, "a vertex collapsed onto none")
        require(all(0 <= c < 3 * header.T for c in split.corners), "a corner does not exist")
        require(all(0 <= t < header.T for t in split.removed), "a removed triangle does not exist")
        if not header.uvs_handled:
            return
        require(len(split.corner_uvs) == len(split.corners), "UV indices do not match the corners")
        require(len(split.pairs) == len(split.uvs), "two words and two floats for each pair")
        require(all(0 <= k < header.K for k in (*split.corner_uvs, *split.pairs)), "no such UV")

    def check_numbering(self):
        vertex, triangle = self.header.V, self.header.T
        for split in self.splits:
            vertex -= 1
            require(split.vertex == vertex, f"vertex {split.vertex} is not in order")
            for t in split.removed:
                triangle -= 1
                require(t == triangle, f"triangle {t} is not in order")
        require(not any(self.vertex_active[vertex:]), "an active vertex after the base")
        require(not any(self.triangle_active[triangle:]), "an active triangle after the base")

    def check_triangles(self):
        for t, active in enumerate(self.triangle_active):
            corners = self.triangles[3 * t:3 * t + 3]
            if active:
                require(all(self.vertex_active[v] for v in corners), f"{t} names a dead vertex")
                require(len(set(corners)) == 3, f"triangle {t} names a vertex twice")

    def active_vertices(self):
        return sum(self.vertex_active)

    def exchange(self, split, keeper):
        self.positions[keeper], split.position = split.position, self.positions[keeper]
        if self.header.colors_handled:
            self.colors[keeper], split.color = split.color, self.colors[keeper]

    def exchange_uv(self, split, k):
        there, here = slice(2 * split.pairs[2 * k + 1], 2 * split.pairs[2 * k + 1] + 2), \
            slice(2 * k, 2 * k + 2)
        self.uvs[there], split.uvs[here] = split.uvs[here], self.uvs[there]

    def up(self):
        """Undoes the last collapse."""
        self.position -= 1
        split = self.splits[self.position]
        require(not self.vertex_active[split.vertex], "a vertex comes back twice")
        self.vertex_active[split.vertex] = True
        for c in split.corners:
            self.triangles[c] = split.vertex
            t = c // 3
            if not self.triangle_active[t]:
                self.triangle_active[t] = True
                for v in self.triangles[3 * t:3 * t + 3]:
                    self.vertex_active[v] = True
        self.exchange(split, self.partners[split.vertex])
        for c, k in zip(split.corners, split.corner_uvs):
            self.uv_indices[c] = k
        for k in range(len(split.pairs) // 2):
            self.exchange_uv(split, k)

    def down(self):
        """Applies the next collapse."""
        split = self.splits[self.position]
        keeper = self.partners[split.vertex]
        self.vertex_active[split.vertex] = False
        for c in split.corners:
            self.triangles[c] = keeper
        for t in {c // 3 for c in split.corners}:
            if len(set(self.triangles[3 * t:3 * t + 3])) < 3:
                self.triangle_active[t] = False
        self.exchange(split, keeper)
        for k in range(len(split.pairs) // 2):
            old, new = split.pairs[2 * k:2 * k + 2]
            for c in split.corners:
                if self.uv_indices[c] == old:
                    self.uv_indices[c] = new
            self.exchange_uv(split, k)
        self.position += 1

    def surface(self):
        """The data at the corners of the active triangles, sorted."""
        return sorted(
            tuple((*self.positions[v], self.colors[v] if self.colors else b"",
                   self.mask[v] if self.mask else 0,
                   *(self.uv_at(3 * t + k) if self.uv_indices else ()))
                  for k, v in enumerate(self.triangles[3 * t:3 * t + 3]))
            for t, active in enumerate(self.triangle_active) if active)

    def uv_at(self, corner):
        k = self.uv_indices[corner]
        return self.uvs[2 * k:2 * k + 2]


def check_against(kvm, mesh):
    """Compares the mesh at its full count with its input."""
    require(kvm.header.V == mesh.vertex_count, f"{mesh.vertex_count} vertices were read")
    require(kvm.header.T == mesh.triangle_count, f"{mesh.triangle_count} triangles were read")
    require(bool(kvm.header.M) == mesh.mask_says_something, "the mask")
    require(bool(kvm.header.C) == (mesh.colors is not None), "the colours")
    require(bool(kvm.header.I) == (mesh.uvs is not None), "the UVs")

    def corner_of_input(corner):
        v = mesh.triangles[corner]
        color = b""
        if mesh.colors is not None:
            blue, green, red = mesh.colors[4 * v:4 * v + 3]
            color = bytes((red, green, blue))
        return (*mesh.positions[3 * v:3 * v + 3], color, mesh.mask[v] if kvm.header.M else 0)

    were = sorted(
        (tuple(corner_of_input(c) for c in range(first, first + 3)),
         tuple(mesh.uvs[2 * first:2 * first + 6]) if mesh.uvs is not None else ())
        for first in range(0, len(mesh.triangles), 3))
    are = sorted(
        (tuple((*corner[:3], corner[3][:3], corner[4]) for corner in triangle),
         tuple(uv for corner in triangle for uv in corner[5:]))
        for triangle in kvm.surface())
    for was, is_now in zip(were, are):
        require(was[0] == is_now[0], f"the triangle at {was[0][0][:3]} is different")
        require(len(was[1]) == len(is_now[1]) and
                all(abs(a - b) <= UV_TOLERANCE for a, b in zip(was[1], is_now[1])),
                f"the UVs of the triangle at {was[0][0][:3]} are different")


def check_file(path, like):
    kvm = Kvm(pathlib.Path(path).read_bytes())
    kvm.check()
    at_rest = kvm.position
    before = kvm.surface()
    low = kvm.active_vertices()
    while kvm.position > 0:
        kvm.up()
    kvm.check_triangles()
    require(all(kvm.vertex_active) and all(kvm.triangle_active), "not everything becomes active")
    if like is not None:
        check_against(kvm, check_vok.read_vok(like))
    while kvm.position < at_rest:
        kvm.down()
    kvm.check_triangles()
    require(kvm.surface() == before, "going back down does not restore the mesh")
    print(f"{path}: {len(kvm.splits)} splits from {low} to {kvm.header.V} vertices, sound")


def build_and_check(tool, source, keys):
    with tempfile.TemporaryDirectory() as folder:
        for reorder in ("DoReorder=Yes", "DoReorder=No"):
            target = pathlib.Path(folder) / (pathlib.Path(source).stem + ".kvm")
            job = pathlib.Path(folder) / "build.kvc"
            job.write_text("\n".join(
                ["StartBatch Build progressive mesh", f"InputFile={pathlib.Path(source).resolve()}",
                 f"OutputFile={target}", reorder, *keys, "EndBatch", ""]), encoding="utf-8")
            run = subprocess.run([tool, str(job)], check=True, capture_output=True)
            require(run.stderr == b"", run.stderr.decode("utf-8", "replace"))
            check_file(target, source)


def main(arguments):
    if len(arguments) > 2 and arguments[0] == "--tool":
        inputs = []
        for argument in arguments[2:]:
            if "=" in argument:
                inputs[-1][1].append(argument)
            else:
                inputs.append((argument, []))
        for source, keys in inputs:
            build_and_check(arguments[1], source, keys)
    elif len(arguments) == 1 or (len(arguments) == 3 and arguments[1] == "--like"):
        check_file(arguments[0], arguments[2] if len(arguments) == 3 else None)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except (KvmError, check_vok.VokError, OSError) as error:
        sys.exit(f"fault: {error}")
