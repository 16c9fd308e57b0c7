#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Makes stars.csv.gz, the bundled table of the stars in the Hipparcos catalogue.

Reads:   D3/data/stars.14.json       Hipparcos number, V, B-V, coarse place (0.0001 degree)
         D3/data/starnames.json      Hipparcos number to proper name
         STARS/stars_*.cat           fine place, parallax, magnitude step of each component
         STARS/hip_plx_err.dat       Hipparcos number, standard error of the parallax
         overrides.csv               hip, vmag, bv, name: V and B-V that replace those of D3
Writes:  stars.csv.gz                hip,ra,dec,vmag,bv,plx,e_plx,name; a row a star, ordered by hip
Units:   ra and dec in degrees (ICRS, epoch J2000), ra in [0, 360); vmag and bv in magnitudes;
         plx and e_plx in milliarcseconds. An empty field is a value that is not known.
Errors:  an input that is missing or damaged ends the run; the output keeps its former state.

D3 is the unpacked npm package d3-celestial 0.7.35, STARS the folder stars/default of Debian's
stellarium-data 0.22.2-1. The same inputs give the same bytes. To run:

    make-stars.py D3 STARS [--overrides FILE] [--out FILE]
"""

import argparse
import csv
import io
import itertools
import json
import math
import os
import struct
import zlib
from pathlib import Path

# Two places of a star agree up to this many arcseconds: the coarse one is rounded by up to 0.25.
# Farther apart, the fine one is of another epoch or of a companion. More than a degree apart, the
# coarse one lost the minus sign of a declination between -1 and 0 degrees.
PLACE_TOLERANCE = 0.6
PLACE_MISTAKE = 3600

HEADER = ["hip", "ra", "dec", "vmag", "bv", "plx", "e_plx", "name"]

# A .cat file, little-endian. Zone z of level n has the zones 4z .. 4z+3 of level n+1 inside it.
#
#     0  u32  magic              16  i32  level: 20 * 4^level zones
#     4  i32  record type        20  i32  mag_min    \
#     8  i32  major version      24  i32  mag_range   > V, not needed here
#    12  i32  minor version      28  i32  mag_steps  /
#    32  u32  number of records in zone 0, zone 1, ...; then the records, zone by zone
FILE_HEADER = struct.Struct("<I7i")
FILE_MAGIC = 0x835F040A

# A record of type 0, the one that names Hipparcos stars.
#
#     0  u24  Hipparcos number    12  u8   B-V index         16  i32  dx0  \  proper motion,
#     3  u8   component           13  u8   magnitude step    20  i32  dx1  /  not needed here
#     4  i32  x0  \  place in     14  u16  spectral type     24  i32  parallax, 0.01 mas
#     8  i32  x1  /  the zone
RECORD = struct.Struct("<I2i2BH3i")
RECORD_TYPE = 0
PLACE_MAX = 2**31 - 1

GZIP = 16 + 15  # zlib: a gzip member without name and time, the largest window


# Places: the sphere cut into triangles, and a flat grid laid on each.


def scaled(k, a):
    return (k * a[0], k * a[1], k * a[2])


def added(*vectors):
    return tuple(map(sum, zip(*vectors)))


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(a):
    return scaled(1 / math.sqrt(dot(a, a)), a)


def icosahedron():
    """Returns the 20 zones of level 0, each as three corners."""
    long, short = unit(((1 + math.sqrt(5)) / 2, 1, 0))[:2]
    xy = [(long, -short, 0), (long, short, 0), (-long, short, 0), (-long, -short, 0)]
    yz = [(0, long, -short), (0, long, short), (0, -long, short), (0, -long, -short)]
    zx = [(-short, 0, long), (short, 0, long), (short, 0, -long), (-short, 0, -long)]
    corners = xy + yz + zx
    faces = [
        (1, 0, 10), (0, 1, 9), (0, 9, 6), (9, 8, 6), (0, 7, 10),
        (6, 7, 0), (7, 6, 3), (6, 8, 3), (11, 10, 7), (7, 3, 11),
        (3, 2, 11), (2, 3, 8), (10, 11, 4), (2, 4, 11), (5, 4, 2),
        (2, 8, 5), (4, 1, 10), (4, 5, 1), (5, 9, 1), (8, 9, 5),
    ]  # fmt: skip
    return [tuple(corners[i] for i in face) for face in faces]


def quartered(zone):
    """Returns the four triangles of a zone: one at each corner, then the middle one."""
    c0, c1, c2 = zone
    e0, e1, e2 = unit(added(c1, c2)), unit(added(c2, c0)), unit(added(c0, c1))
    return [(c0, e2, e1), (e2, c1, e0), (e1, e0, c2), (e0, e1, e2)]


def zones_of(level):
    zones = icosahedron()
    for _ in range(level):
        zones = [part for zone in zones for part in quartered(zone)]
    return zones


def grid_of(zone):
    """Returns a zone's centre and the axes, east and north, of the plane that touches it there."""
    centre = unit(added(*zone))
    east = unit(cross((0, 0, 1), centre))
    return centre, east, cross(centre, east)


def reach(zone):
    """Returns how far the zone's corners lie from its centre, the farther axis counting."""
    _, east, north = grid_of(zone)

    def corner_reach(corner):
        u, v = dot(corner, east), dot(corner, north)
        return max(abs(u), abs(v)) / math.sqrt(1 - u * u - v * v)

    return max(map(corner_reach, zone))


def place_in(grid, step, x0, x1):
    """Returns (ra, dec) in degrees of a grid point, ra in [0, 360)."""
    centre, east, north = grid
    x, y, z = added(centre, scaled(step * x0, east), scaled(step * x1, north))
    return math.degrees(math.atan2(y, x)) % 360, math.degrees(math.atan2(z, math.hypot(x, y)))


# Inputs.


def read_components(path):
    """Yields (hip, component, magnitude step, place, parallax) of a .cat file's records.

    A file of another record type has no Hipparcos numbers and yields nothing.
    """
    data = path.read_bytes()
    magic, kind, _, _, level, *_ = FILE_HEADER.unpack_from(data)
    if magic != FILE_MAGIC:
        raise SystemExit(f"{path}: not a star catalogue: magic number {magic:#x}")
    if kind != RECORD_TYPE:
        return
    zones = zones_of(level)
    counts = struct.unpack_from(f"<{len(zones)}I", data, FILE_HEADER.size)
    first = FILE_HEADER.size + 4 * len(zones)
    if len(data) != first + RECORD.size * sum(counts):
        raise SystemExit(f"{path}: {len(data)} bytes do not fit {sum(counts)} records")

    step = max(map(reach, zones)) / PLACE_MAX
    records = RECORD.iter_unpack(data[first:])
    for zone, count in zip(zones, counts):
        grid = grid_of(zone)
        for record in itertools.islice(records, count):
            number, x0, x1, _, mag, _, _, _, plx = record
            hip, component = number & 0xFFFFFF, number >> 24
            if hip:
                yield hip, component, mag, place_in(grid, step, x0, x1), plx / 100


def read_places(folder):
    """Returns {hip: (place, parallax)} of each star's brightest component, the lowest if equal."""
    brightest = {}
    for path in sorted(folder.glob("stars_[0-9]_*.cat")):
        for hip, component, mag, place, plx in read_components(path):
            rank = (mag, component)
            if hip not in brightest or rank < brightest[hip][0]:
                brightest[hip] = (rank, place, plx)
    if not brightest:
        raise SystemExit(f"{folder}: no star catalogues with Hipparcos numbers")
    return {hip: (place, plx) for hip, (_, place, plx) in brightest.items()}


def read_parallax_errors(path):
    """Returns {hip: standard error}; where a number comes twice the later line counts."""
    lines = path.read_text("ascii").splitlines()
    rows = (line.split() for line in lines if not line.startswith("#"))
    return {int(hip): float(error) for hip, error in rows}


def read_names(path):
    """Returns {hip: proper name}, without the stars that have only a designation."""
    names = json.loads(path.read_text("utf-8"))
    return {int(hip): entry["name"] for hip, entry in names.items() if entry["name"]}


def read_photometry(path):
    """Returns {hip: (place, V, B-V as written, empty if unknown)}."""
    stars = {}
    for star in json.loads(path.read_text("utf-8"))["features"]:
        lon, lat = star["geometry"]["coordinates"]
        values = star["properties"]
        stars[star["id"]] = ((lon % 360, lat), values["mag"], values["bv"])
    return stars


def read_overrides(path):
    """Returns {hip: (V, B-V as written)}."""
    with path.open(encoding="utf-8", newline="") as file:
        return {int(row["hip"]): (float(row["vmag"]), row["bv"]) for row in csv.DictReader(file)}


# Output.


def separation(a, b):
    """Returns the arcseconds between two places that lie close to each other."""
    east = ((a[0] - b[0] + 180) % 360 - 180) * math.cos(math.radians(b[1]))
    return 3600 * math.hypot(east, a[1] - b[1])


def better_place(fine, coarse):
    """Returns the fine place unless it is the one at fault."""
    apart = separation(fine, coarse)
    return coarse if PLACE_TOLERANCE < apart <= PLACE_MISTAKE else fine


def without_zeros(number):
    """Returns a decimal fraction as text without its closing zeros."""
    return number.rstrip("0").rstrip(".") if "." in number else number


def table(photometry, places, errors, names, overrides):
    """Yields the rows of the table as text fields, ordered by Hipparcos number."""
    for hip, (coarse_place, vmag, bv) in sorted(photometry.items()):
        fine_place, plx = places.get(hip, (coarse_place, 0))
        ra, dec = better_place(fine_place, coarse_place)
        vmag, bv = overrides.get(hip, (vmag, bv))
        measured = plx > 0
        yield [
            str(hip),
            f"{round(ra, 5) % 360:.5f}",
            f"{dec:.5f}",
            f"{vmag:.2f}",
            without_zeros(bv),
            f"{plx:.2f}" if measured else "",
            f"{errors[hip]:.2f}" if measured and hip in errors else "",
            names.get(hip, ""),
        ]


def packed(rows):
    """Returns the rows as gzipped CSV, the same bytes for the same rows.

    The filtered strategy skips short matches, which cost more than they save among random digits.
    """
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    writer.writerow(HEADER)
    writer.writerows(rows)
    press = zlib.compressobj(9, zlib.DEFLATED, GZIP, 9, zlib.Z_FILTERED)
    return press.compress(text.getvalue().encode("utf-8")) + press.flush()


def write_whole(path, data):
    """Writes a file under another name first, so that a failure leaves the former one."""
    part = path.with_name(path.name + ".part")
    part.write_bytes(data)
    os.replace(part, path)


def arguments():
    here = Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description="Makes the bundled star table.")
    parser.add_argument("d3", type=Path, help="unpacked npm package d3-celestial")
    parser.add_argument("stars", type=Path, help="folder with stars_*.cat and hip_plx_err.dat")
    parser.add_argument("--overrides", type=Path, default=here / "overrides.csv")
    parser.add_argument("--out", type=Path, default=here / "stars.csv.gz")
    return parser.parse_args()


def main():
    args = arguments()
    photometry = read_photometry(args.d3 / "data" / "stars.14.json")
    names = read_names(args.d3 / "data" / "starnames.json")
    places = read_places(args.stars)
    errors = read_parallax_errors(args.stars / "hip_plx_err.dat")
    overrides = read_overrides(args.overrides)
    strangers = overrides.keys() - photometry.keys()
    if strangers:
        raise SystemExit(f"{args.overrides}: no such stars: {sorted(strangers)}")
    write_whole(args.out, packed(table(photometry, places, errors, names, overrides)))


if __name__ == "__main__":
    main()
