#!/usr/bin/python3
"""numpy and Pillow as peers; peer.h has the protocol. Arrays are words of A, R, G, B from the lowest byte up."""

import json
import sys
import time

import numpy as np
from PIL import Image, ImageChops

OPAQUE = np.uint32(0xFF)
COLOUR_BITS = np.uint32(0xFFFFFF00)
WHOLE = np.uint32(0xFFFFFFFF)


class Task:
    def __init__(self, settings):
        self.settings = settings
        self.width = settings["width"]
        self.height = settings["height"]
        self.inputs = [np.fromfile(path, np.uint8) for path in settings["inputs"]]
        self.shape = (self.height, self.width)

    def words(self, index=0):
        return self.inputs[index].view(np.uint32).reshape(self.shape)

    def image(self, index=0):
        """A Pillow picture, which keeps R, G, B in four bytes."""
        rgb = np.ascontiguousarray(self.inputs[index].reshape(self.shape + (4,))[:, :, 1:])
        return Image.fromarray(rgb, "RGB")


class Way:
    """`run` returns what `result` makes bytes of."""

    def __init__(self, name, run, result=None):
        self.name = name
        self.run = run
        self.result = result or (lambda made: np.asarray(made, np.int32).tobytes())


def word(colour):
    return np.uint32(int.from_bytes((colour & 0xFFFFFF).to_bytes(3, "big"), "little") << 8 | 0xFF)


def drawing(name, task, draw):
    """draw(out) fills an array that has been touched before."""
    out = np.full(task.shape, 1, np.uint32)

    def run():
        draw(out)
        return out

    return Way("numpy " + name, run, lambda made: made.tobytes())


def measuring(name, measure):
    return Way("numpy " + name, lambda: [measure()])


def pillow(name, run):
    def result(made):
        argb = np.full((made.height, made.width, 4), 255, np.uint8)
        argb[:, :, 1:] = np.asarray(made)
        return argb.tobytes()

    return Way("Pillow " + name, run, result)


def invert(task):
    words, image = task.words(), task.image()
    return [
        drawing("invert", task, lambda out: np.invert(words, out=out)),
        pillow("ImageChops.invert", lambda: ImageChops.invert(image)),
    ]


def linear(task):
    image = task.image()
    table = [
        int(min(max(level * scale + offset, 0.0), 255.0))
        for scale, offset in task.settings["lines"]
        for level in range(256)
    ]
    return [pillow("point", lambda: image.point(table))]


def matrix(task):
    image = task.image()
    numbers = [number for row in task.settings["matrix"] for number in row]
    return [pillow("convert with a matrix", lambda: image.convert("RGB", numbers))]


def sepia(task):
    image = task.image()
    weights = [weight / 1024 for weight in task.settings["weights"]]
    numbers = [number for offset in task.settings["offsets"] for number in (*weights, offset - 0.499)]
    return [pillow("convert with a matrix", lambda: image.convert("RGB", numbers))]


def all_black(task):
    words = task.words()
    return [
        measuring("bitwise_or.reduce", lambda: (np.bitwise_or.reduce(words, axis=None) & COLOUR_BITS) == 0),
        measuring("all", lambda: not (words & COLOUR_BITS).any()),
    ]


def all_white(task):
    words = task.words()
    return [
        measuring("bitwise_and.reduce", lambda: (np.bitwise_and.reduce(words, axis=None) | OPAQUE) == WHOLE),
        measuring("all, opaque", lambda: (words == WHOLE).all()),
    ]


def is_grey(task):
    if task.settings["tolerance"] != 0:
        return []
    words = task.words()
    return [measuring("any", lambda: not ((words >> 8 ^ words >> 16) & np.uint32(0xFFFF)).any())]


def count_one_colour(task):
    words, wanted = task.words(), word(task.settings["color"])
    return [
        measuring("count_nonzero", lambda: np.count_nonzero(words | OPAQUE == wanted)),
        measuring("count_nonzero, opaque", lambda: np.count_nonzero(words == wanted)),
    ]


def replace_one_colour(task):
    words, wanted, replacement = task.words(), word(task.settings["color"]), word(task.settings["replacement"])

    def draw(out):
        np.copyto(out, words)
        np.copyto(out, replacement, where=words == wanted)

    return [drawing("copyto, opaque", task, draw)]


def histograms(task):
    image = task.image()
    return [Way("Pillow histogram", image.histogram)]


def tables(task):
    image, table = task.image(), task.inputs[1].tolist()
    return [pillow("point", lambda: image.point(table))]


def replace_channel(task):
    words, other = task.words(), task.words(1)
    channel = task.settings["channel"]

    def draw(out):
        np.copyto(out, words)
        out.view(np.uint8)[:, channel::4] = other.view(np.uint8)[:, channel::4]

    return [drawing("copyto and a strided copy", task, draw)]


def combine_channels(task):
    channels = [task.words(index).view(np.uint8)[:, 1 + index :: 4] for index in range(3)]

    def draw(out):
        for index, channel in enumerate(channels):
            out.view(np.uint8)[:, 1 + index :: 4] = channel

    return [drawing("three strided copies", task, draw)]


def maximum_of_two(task):
    a, b = task.words().view(np.uint8), task.words(1).view(np.uint8)
    return [drawing("maximum", task, lambda out: np.maximum(a, b, out=out.view(np.uint8)))]


def alpha_to_grey(task):
    words, turn = task.words(), np.uint32(0xFFFFFF00 if task.settings["swap"] else 0)

    def draw(out):
        np.bitwise_and(words, OPAQUE, out=out)
        np.multiply(out, np.uint32(0x01010100), out=out)
        np.bitwise_xor(out, turn, out=out)

    return [drawing("three passes", task, draw)]


def grey_to_alpha(task):
    if task.settings["swap"]:
        return []
    picture = task.words().copy()
    mask = task.words(1)

    def run():
        picture.view(np.uint8)[:, 0::4] = mask.view(np.uint8)[:, 1::4]
        return picture

    return [Way("numpy strided copy", run, lambda made: made.tobytes())]


def rotate_rows(task):
    words, shift = task.words(), task.settings["delta"] % task.height

    def draw(out):
        out[shift:] = words[: task.height - shift]
        out[:shift] = words[task.height - shift :]

    return [drawing("two slices into another picture", task, draw)]


def rotate_columns(task):
    words, shift = task.words(), task.settings["delta"] % task.width

    def draw(out):
        out[:, shift:] = words[:, : task.width - shift]
        out[:, :shift] = words[:, task.width - shift :]

    return [drawing("two slices into another picture", task, draw)]


def waveform(task):
    samples = task.inputs[0]
    count = task.settings["samples"]
    starts = np.trunc(np.arange(task.width + 1) / task.width * count).astype(np.int64)
    sizes = np.diff(starts)

    def run():
        positive = np.empty(task.width, np.int64)
        negative = np.empty(task.width, np.int64)
        for column in range(task.width):
            part = samples[starts[column] : starts[column + 1]]
            above = int(np.maximum(part, 128).sum(dtype=np.uint32))
            positive[column] = above - 128 * len(part)
            negative[column] = int(part.sum(dtype=np.uint32)) - above
        return positive, negative

    def result(sums):
        means = [values / (sizes * 0.5) for values in sums]
        peak = max(means[0].max(), -means[1].min())
        rows = [np.trunc(values * task.height / (2 * peak) + task.height // 2) for values in (means[1], means[0])]
        return np.clip(np.stack(rows, 1), 0, task.height - 1).astype(np.int32).tobytes()

    return [Way("numpy sums, no picture", run, result)]


OFFERS = {
    "invert": invert,
    "all black": all_black,
    "all white": all_white,
    "is grey": is_grey,
    "count one colour": count_one_colour,
    "replace one colour": replace_one_colour,
    "replace a channel": replace_channel,
    "combine channels": combine_channels,
    "maximum of two": maximum_of_two,
    "alpha to grey": alpha_to_grey,
    "grey to alpha": grey_to_alpha,
    "rotate rows": rotate_rows,
    "rotate columns": rotate_columns,
    "waveform": waveform,
    "linear": linear,
    "histograms": histograms,
    "tables": tables,
    "tint": matrix,
    "sepia": sepia,
}


class Server:
    def __init__(self):
        self.ways = {}

    def answer(self, request):
        if "prepare" in request:
            settings = request["prepare"]
            offer = OFFERS.get(settings["work"])
            self.ways = {}
            ways = offer(Task(settings)) if offer else []
            self.ways = {way.name: way for way in ways}
            return {"ways": list(self.ways)}
        if "run" in request:
            run = self.ways[request["run"]].run
            start = time.process_time_ns()
            for _ in range(request["times"]):
                run()
            return {"seconds": (time.process_time_ns() - start) * 1e-9 / request["times"]}
        way = self.ways[request["save"]]
        with open(request["to"], "wb") as file:
            file.write(way.result(way.run()))
        return {}


def main():
    server = Server()
    for line in sys.stdin:
        try:
            answer = server.answer(json.loads(line))
        except Exception as error:  # the bench shows it and goes on without this peer
            answer = {"error": f"{type(error).__name__}: {error}"}
        print(json.dumps(answer), flush=True)


main()
