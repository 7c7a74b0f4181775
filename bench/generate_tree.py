#!/usr/bin/env python3
"""Deterministic test trees for the benchmark.

  generate_tree.py small ROOT [--files N] [--folders N] [--seed S]
      N small files (0-4 KiB of seeded random bytes) spread evenly over about N folders,
      two levels deep: ROOT/dXXX/dXXXX/fXXXXXX.dat.
  generate_tree.py big PATH [--size BYTES] [--seed S]
      one file of seeded random bytes (2 GiB by default), written in 1 MiB blocks.
  generate_tree.py many ROOT [--items N]
      N empty files in folders of 100, for measuring the memory of a scan.

The same arguments always give the same names, sizes and bytes. Modification times are set to a
fixed date so that two generations compare equal. An existing ROOT is refused.
"""
import argparse
import os
import random
import sys

FIXED_TIME = 1_600_000_000  # 2020-09-13, for every generated item
BLOCK = 1 << 20


def refuse_existing(path):
    if os.path.lexists(path):
        sys.exit(f"generate_tree.py: {path} exists; remove it first")


def small(root, files, folders, seed):
    refuse_existing(root)
    rng = random.Random(seed)
    top = max(1, int(round(folders ** 0.5)))
    per_top = max(1, folders // top)
    leaves = [os.path.join(root, f"d{t:03d}", f"d{s:04d}") for t in range(top) for s in range(per_top)]
    for leaf in leaves:
        os.makedirs(leaf)
    for index in range(files):
        leaf = leaves[index % len(leaves)]
        path = os.path.join(leaf, f"f{index:06d}.dat")
        with open(path, "wb") as out:
            out.write(rng.randbytes(rng.randint(0, 4096)))
        os.utime(path, (FIXED_TIME, FIXED_TIME))
    for directory, _, _ in os.walk(root, topdown=False):
        os.utime(directory, (FIXED_TIME, FIXED_TIME))
    print(f"{root}: {files} files in {len(leaves)} folders")


def big(path, size, seed):
    refuse_existing(path)
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    rng = random.Random(seed)
    # Sixteen distinct blocks repeated: incompressible enough, and fast to write.
    blocks = [rng.randbytes(BLOCK) for _ in range(16)]
    written = 0
    with open(path, "wb") as out:
        while written < size:
            chunk = blocks[(written // BLOCK) % len(blocks)][: size - written]
            out.write(chunk)
            written += len(chunk)
    os.utime(path, (FIXED_TIME, FIXED_TIME))
    print(f"{path}: {size} bytes")


def many(root, items):
    refuse_existing(root)
    per_folder = 100
    for index in range(items):
        if index % per_folder == 0:
            folder = os.path.join(root, f"g{index // 10000:03d}", f"h{index // per_folder:05d}")
            os.makedirs(folder)
        fd = os.open(os.path.join(folder, f"i{index:07d}"), os.O_CREAT | os.O_WRONLY, 0o644)
        os.close(fd)
    print(f"{root}: {items} empty files")


def parse_size(text):
    units = {"k": 1 << 10, "m": 1 << 20, "g": 1 << 30}
    text = text.strip().lower().removesuffix("ib").removesuffix("b")
    if text and text[-1] in units:
        return int(float(text[:-1]) * units[text[-1]])
    return int(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    kinds = parser.add_subparsers(dest="kind", required=True)
    p = kinds.add_parser("small")
    p.add_argument("root")
    p.add_argument("--files", type=int, default=100_000)
    p.add_argument("--folders", type=int, default=10_000)
    p.add_argument("--seed", type=int, default=1)
    p = kinds.add_parser("big")
    p.add_argument("path")
    p.add_argument("--size", type=parse_size, default=2 << 30)
    p.add_argument("--seed", type=int, default=2)
    p = kinds.add_parser("many")
    p.add_argument("root")
    p.add_argument("--items", type=int, default=1_000_000)
    args = parser.parse_args()
    if args.kind == "small":
        small(args.root, args.files, args.folders, args.seed)
    elif args.kind == "big":
        big(args.path, args.size, args.seed)
    else:
        many(args.root, args.items)


if __name__ == "__main__":
    main()
