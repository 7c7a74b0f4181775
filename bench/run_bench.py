#!/usr/bin/env python3
"""Times `marigold sync` side by side with `rsync` and `cp -a`, and prints medians and ratios.

Every timed case runs N alternating pairs (--pairs, 5 by default): in odd rounds marigold goes
first, in even rounds the other tools do, so that a slow spell of the machine hits both. Each row
gives the median and the least and greatest time of each tool, and the ratio of the medians.

Cases:
  first copy       the small tree (100,000 files in 10,000 folders) into an empty folder, warm
  nothing to do    the same command again on the finished copy (against rsync -a)
  1 % change       600 files replaced, 200 added, 200 deleted, against rsync -a --delete
                   (marigold: sync --backup --exact); each tool updates its own earlier copy
  cold first copy  the first copy with the page cache dropped before, and `sync` inside the time
  big file         one 2 GiB file into an empty folder, on the work folder's file system
  big (reflink)    the same on a loop-mounted btrfs image (root only; skipped otherwise)
  dry run          marigold's dry run over 1,000,000 items (time), and the peak resident memory
                   of it and of rsync -a --dry-run (`/usr/bin/time -v`)

Usage: run_bench.py --marigold PATH [--work DIR] [--quick] [--keep] [--pairs N] [--skip GROUP]...
(GROUP: copies, cold, reflink, dry-run; the cold case drops the page cache of the whole machine)
Run by hand; not part of the test suite. See bench/README.md.
"""
import argparse
import os
import random
import shutil
import statistics
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
GENERATOR = os.path.join(HERE, "generate_tree.py")
# The 1 % change: files replaced, added and deleted (a tenth of each with --quick).
CHANGE = {"replaced": 600, "added": 200, "deleted": 200}


class Bench:
    def __init__(self, args):
        self.marigold = os.path.abspath(args.marigold)
        self.work = os.path.abspath(args.work)
        self.quick = args.quick
        self.pairs = args.pairs
        self.cold = "cold" not in args.skip
        home = os.path.join(self.work, "home")
        os.makedirs(home, exist_ok=True)
        # A home of its own: the user's preferences and logs stay out of the measurements.
        self.env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, ".config"),
                        XDG_DATA_HOME=os.path.join(home, ".local/share"), LC_ALL="C.UTF-8")
        self.env.pop("LANGUAGE", None)
        self.rows = []
        self.memory = None

    # --- trees -------------------------------------------------------------------------------

    def generate(self, kind, path, *extra):
        stamp = path + ".done"
        if os.path.exists(stamp):
            return path
        if os.path.lexists(path):
            remove(path)
        subprocess.run([sys.executable, GENERATOR, kind, path, *extra], check=True)
        open(stamp, "w").close()
        return path

    def small_tree(self):
        extra = ["--files", "10000", "--folders", "1000"] if self.quick else []
        return self.generate("small", os.path.join(self.work, "small" + ("-quick" if self.quick else "")), *extra)

    def changed_tree(self, small):
        """A copy of the small tree with the 1 % change made to it (seeded: always the same)."""
        path = small + "-changed"
        if os.path.exists(path + ".done"):
            return path
        if os.path.lexists(path):
            remove(path)
        subprocess.run(["cp", "-a", small, path], check=True)
        files = sorted(os.path.join(folder, name) for folder, _, names in os.walk(path) for name in names)
        rng = random.Random(3)
        scale = 10 if self.quick else 1
        picked = rng.sample(files, (CHANGE["replaced"] + CHANGE["deleted"]) // scale)
        replaced, deleted = picked[:CHANGE["replaced"] // scale], picked[CHANGE["replaced"] // scale:]
        for index, file in enumerate(replaced):
            with open(file, "wb") as out:
                out.write(rng.randbytes(rng.randrange(1, 4096)))
            os.utime(file, (1_700_000_000 + index, 1_700_000_000 + index))
        for file in deleted:
            os.remove(file)
        for index in range(CHANGE["added"] // scale):
            folder = os.path.dirname(rng.choice(files))
            file = os.path.join(folder, f"new{index:04d}.dat")
            with open(file, "wb") as out:
                out.write(rng.randbytes(rng.randrange(0, 4096)))
            os.utime(file, (1_700_000_000, 1_700_000_000))
        open(path + ".done", "w").close()
        return path

    def big_file(self, folder):
        size = "256M" if self.quick else "2G"
        return self.generate("big", os.path.join(folder, f"big-{size}", "big.dat"), "--size", size)

    def many_tree(self):
        items = "100000" if self.quick else "1000000"
        return self.generate("many", os.path.join(self.work, f"many-{items}"), "--items", items)

    # --- the tools -----------------------------------------------------------------------------

    def command(self, tool, source, dest, delete=False):
        """The tool's command bringing the folder `dest` up to date with the folder `source`."""
        if tool == "marigold":
            return [self.marigold, "sync", "--backup", *(["--exact"] if delete else []), source, dest]
        if tool == "rsync":
            return ["rsync", "-a", *(["--delete"] if delete else []), source + "/", dest + "/"]
        return ["cp", "-a", source + "/.", dest]

    def run(self, command):
        result = subprocess.run(command, env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if result.returncode != 0:
            sys.exit(f"run_bench.py: {' '.join(command)} failed ({result.returncode}):\n"
                     f"{result.stderr.decode(errors='replace')}")

    def timed(self, command, cold=False):
        # Dirty pages of the previous step would otherwise be written back inside this timing.
        os.sync()
        if cold:
            with open("/proc/sys/vm/drop_caches", "w") as caches:
                caches.write("3\n")
        start = time.perf_counter()
        self.run(command)
        if cold:
            os.sync()  # a cold copy counts until its data is on the disk
        return time.perf_counter() - start

    def rounds(self, name, tools, step):
        """Runs step(tool) for each tool, `pairs` times, alternating who goes first."""
        times = {tool: [] for tool in tools}
        for round_index in range(self.pairs):
            order = tools if round_index % 2 == 0 else tools[1:] + tools[:1]
            for tool in order:
                times[tool].append(step(tool))
        self.rows.append((name, times))

    def fresh(self, name):
        path = os.path.join(self.work, name)
        if os.path.lexists(path):
            remove(path)
        os.makedirs(path)
        return path

    # --- cases -----------------------------------------------------------------------------------

    def run_copies(self):
        small = self.small_tree()
        tools = ["marigold", "rsync", "cp"]

        def first(tool, cold=False):
            dest = self.fresh(f"dest-{tool}")
            return self.timed(self.command(tool, small, dest), cold)

        self.rounds("first copy (small files)", tools, first)

        def again(tool):  # on the copy the last first-copy round left
            return self.timed(self.command(tool, small, os.path.join(self.work, f"dest-{tool}")))

        self.rounds("nothing to do (small files)", tools[:2], again)

        changed = self.changed_tree(small)
        for tool in tools[:2]:
            self.run(self.command(tool, small, self.fresh(f"base-{tool}")))

        def change(tool):
            dest = os.path.join(self.work, f"dest-{tool}")
            if os.path.lexists(dest):
                remove(dest)
            self.run(["cp", "-a", os.path.join(self.work, f"base-{tool}"), dest])
            return self.timed(self.command(tool, changed, dest, delete=True))

        self.rounds("1 % change (small files)", tools[:2], change)
        if self.cold and os.geteuid() == 0:
            self.rounds("cold first copy (small files)", tools[:2], lambda tool: first(tool, cold=True))
        elif self.cold:
            print("cold first copy: skipped (dropping the page cache needs root)")
        for name in ("base-marigold", "base-rsync", "dest-marigold", "dest-rsync", "dest-cp"):
            remove(os.path.join(self.work, name))

        big = os.path.dirname(self.big_file(self.work))
        self.rounds("big file, local", ["marigold", "cp"],
                    lambda tool: self.timed(self.command(tool, big, self.fresh(f"dest-{tool}"))))

    def run_reflink(self):
        if os.geteuid() != 0 or not shutil.which("mkfs.btrfs"):
            print("big file on a reflink file system: skipped (needs root and mkfs.btrfs)")
            return
        image = os.path.join(self.work, "reflink.img")
        mount = os.path.join(self.work, "reflink")
        size_gib = 2 if self.quick else 6
        device = None
        try:
            with open(image, "wb") as out:
                out.truncate(size_gib << 30)
            subprocess.run(["mkfs.btrfs", "-q", "-f", image], check=True)
            device = subprocess.run(["losetup", "-f", "--show", image], check=True, capture_output=True,
                                    text=True).stdout.strip()
            os.makedirs(mount, exist_ok=True)
            subprocess.run(["mount", device, mount], check=True)
            big = os.path.dirname(self.big_file(mount))

            def copy(tool):
                dest = os.path.join(mount, f"dest-{tool}")
                if os.path.lexists(dest):
                    remove(dest)
                os.makedirs(dest)
                return self.timed(self.command(tool, big, dest))

            self.rounds("big file, reflink (btrfs)", ["marigold", "cp"], copy)
        finally:
            subprocess.run(["umount", mount], check=False, stderr=subprocess.DEVNULL)
            if device:
                subprocess.run(["losetup", "-d", device], check=False)
            if os.path.exists(image):
                os.remove(image)

    def run_dry_run(self):
        many = self.many_tree()
        dest = self.fresh("many-dest")
        dry = [self.marigold, "sync", "--backup", "--dry-run", many, dest]
        self.rounds("dry run of the many-item tree", ["marigold"], lambda tool: self.timed(dry))
        if not os.path.exists("/usr/bin/time"):
            print("scan memory: skipped (needs /usr/bin/time)")
            return
        self.memory = {"marigold": self.peak_rss(dry),
                       "rsync": self.peak_rss(["rsync", "-a", "--dry-run", many + "/", dest + "/"])}

    def peak_rss(self, command):
        result = subprocess.run(["/usr/bin/time", "-v", *command], env=self.env, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True)
        for line in result.stderr.splitlines():
            if "Maximum resident set size" in line:
                return int(line.rsplit(":", 1)[1]) * 1024
        sys.exit(f"run_bench.py: no memory figure from {' '.join(command)}:\n{result.stderr}")

    # --- report ----------------------------------------------------------------------------------

    def report(self):
        print(f"\n{self.pairs} alternating rounds per case; median (least-greatest) in seconds")
        print(f"{'case':32} {'marigold':>20} {'rsync':>20} {'cp -a':>20} {'÷ rsync':>8} {'÷ cp':>6}")
        for name, times in self.rows:
            cells = [spread(times[tool]) if tool in times else "" for tool in ("marigold", "rsync", "cp")]
            m = statistics.median(times["marigold"])
            r = ratio(m, statistics.median(times["rsync"])) if "rsync" in times else ""
            c = ratio(m, statistics.median(times["cp"])) if "cp" in times else ""
            print(f"{name:32} {cells[0]:>20} {cells[1]:>20} {cells[2]:>20} {r:>8} {c:>6}")
        if self.memory:
            m, r = self.memory["marigold"], self.memory["rsync"]
            print(f"{'peak memory, dry run':32} {mib(m):>20} {mib(r):>20}")


def spread(times):
    return f"{statistics.median(times):.2f} ({min(times):.2f}-{max(times):.2f})"


def ratio(a, b):
    return f"{a / b:.2f}x" if b > 0 else "-"


def mib(n):
    return f"{n / (1 << 20):.0f} MiB"


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    else:
        os.remove(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--marigold", required=True, help="the marigold program to measure (a Release build)")
    parser.add_argument("--work", default="/var/tmp/marigold-bench", help="where trees and copies go")
    parser.add_argument("--quick", action="store_true", help="a tenth of the sizes, to try the harness out")
    parser.add_argument("--keep", action="store_true", help="keep the generated trees for the next run")
    parser.add_argument("--pairs", type=int, default=5, help="alternating rounds per case (default 5)")
    parser.add_argument("--skip", action="append", default=[], choices=["copies", "cold", "reflink", "dry-run"])
    args = parser.parse_args()
    for tool in ("rsync", "cp"):
        if not shutil.which(tool):
            sys.exit(f"run_bench.py: {tool} is needed for the comparison")
    os.makedirs(args.work, exist_ok=True)
    bench = Bench(args)
    try:
        if "copies" not in args.skip:
            bench.run_copies()
        if "reflink" not in args.skip:
            bench.run_reflink()
        if "dry-run" not in args.skip:
            bench.run_dry_run()
        bench.report()
    finally:
        if not args.keep:
            shutil.rmtree(args.work, ignore_errors=True)


if __name__ == "__main__":
    main()
