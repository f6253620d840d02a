# SPDX-License-Identifier: Apache-2.0
"""Prepares packs from the published finder, synthetic files in the published formats, and a local server that
drops connections."""

import http.server
import importlib.machinery
import importlib.util
import json
import os
import pickle
import subprocess
import sys
import tempfile
import threading
import types
import unittest
from collections import OrderedDict
from pathlib import Path

try:
    import numpy as np
    import onnx
    from onnx import TensorProto, helper, numpy_helper
except ImportError:
    print("Skipped: needs python3-onnx and python3-numpy.")
    sys.exit(0)

ROOT = Path(__file__).resolve().parents[2]
SHARED = Path(os.environ.get("MARROWBY_SHARED", ROOT.parent / "shared")) / "models"
SCRIPT = ROOT / "Tools" / "prepare-pack"
if not SHARED.is_dir():
    print("Skipped: needs the folder of models and media (MARROWBY_SHARED).")
    sys.exit(0)

sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("prepare_pack", str(SCRIPT))
spec = importlib.util.spec_from_loader("prepare_pack", loader)
prepare_pack = importlib.util.module_from_spec(spec)
loader.exec_module(prepare_pack)
from modelpack import minifasnet, originals  # noqa: E402


class Server(http.server.ThreadingHTTPServer):
    """Serves one file's bytes, with ranges; drops the connection after so many."""

    def __init__(self, content: bytes, breaks_after: int | None = None):
        super().__init__(("127.0.0.1", 0), Handler)
        self.content, self.breaks_after, self.ranges = content, breaks_after, []
        self.thread = threading.Thread(target=self.serve_forever)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.shutdown()
        self.thread.join()
        self.server_close()

    @property
    def url(self) -> str:
        return f"http://127.0.0.1:{self.server_port}/"


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        asked = self.headers.get("Range")
        self.server.ranges.append(asked)
        start = int(asked.removeprefix("bytes=").rstrip("-")) if asked else 0
        body = self.server.content[start:]
        self.send_response(206 if asked else 200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body[:self.server.breaks_after])

    def log_message(self, *_):
        pass


def run(folder: Path, *arguments: str) -> subprocess.CompletedProcess:
    environment = {key: value for key, value in os.environ.items() if "proxy" not in key.lower()}
    return subprocess.run([SCRIPT, folder, *arguments], capture_output=True, text=True,
                          env=environment | {"PYTHONDONTWRITEBYTECODE": "1"}, check=False)


class PreparePackTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="marrowby-")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)
        self.finder = (SHARED / originals.FINDER.file).read_bytes()

    def test_takes_from_a_folder_and_describes_what_is_there(self):
        done = run(self.folder, "--from", str(SHARED), "--only", "finder")
        self.assertEqual(done.returncode, 0, done.stderr)
        pack = json.loads((self.folder / "pack.json").read_text(encoding="utf-8"))
        [entry] = pack["models"]
        self.assertEqual(entry["role"], "finder")
        self.assertEqual(entry["sha256"], originals.FINDER.sha256)
        self.assertEqual([value["name"] for value in entry["inputs"]], ["input"])
        self.assertEqual(len(entry["outputs"]), 12)

        # A file is missing, so no pack is made.
        done = run(self.folder, "--from", str(SHARED))
        self.assertEqual(done.returncode, 1)
        self.assertIn("SFace: face_recognition_sface_2021dec.onnx isn’t in", done.stderr)
        self.assertFalse((self.folder / "pack.json").exists())

    def test_goes_on_where_a_download_broke_off(self):
        for breaks_after, status in ((100_000, 1), (None, 0)):
            with Server(self.finder, breaks_after) as server:
                done = run(self.folder, "--mirror", server.url, "--only", "finder", "--progress")
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertIn("42 %" if breaks_after else "100 %", done.stdout.splitlines())
                ranges = server.ranges
        self.assertEqual(ranges, ["bytes=100000-"])
        self.assertEqual((self.folder / originals.FINDER.file).read_bytes(), self.finder)
        # Cached files are not downloaded again: the server is gone.
        self.assertEqual(run(self.folder, "--mirror", server.url, "--only", "finder").returncode, 0)

    def test_refuses_and_deletes_what_is_not_the_published_file(self):
        changed = bytearray(self.finder)
        changed[1000] ^= 1
        for content in (bytes(changed), self.finder + b"more"):
            with Server(content) as server:
                done = run(self.folder, "--mirror", server.url, "--only", "finder")
            self.assertEqual(done.returncode, 1)
            self.assertIn("YuNet: face_detection_yunet_2023mar.onnx isn’t the published file", done.stderr)
            self.assertEqual(list((self.folder / "originals").iterdir()), [])
            self.assertFalse((self.folder / "pack.json").exists())

    def test_renames_and_stamps_the_face_model(self):
        def value(name, shape):
            return helper.make_tensor_value_info(name, TensorProto.FLOAT, shape)
        weight = numpy_helper.from_array(np.ones((128, 37632), np.float32), "w")
        graph = helper.make_graph(
            [helper.make_node("Flatten", ["data"], ["flat"]),
             helper.make_node("Gemm", ["flat", "w"], ["fc1"], transB=1)], "g",
            # Like that model's exporter, with weights among the inputs.
            [value("data", [1, 3, 112, 112]), value("w", [128, 37632])], [value("fc1", [1, 128])], [weight])
        source = self.folder / "sface.onnx"
        onnx.save(helper.make_model(graph), str(source))
        made = self.folder / "SFace.onnx"
        made.write_bytes(prepare_pack.make_embedder(source))
        onnx.checker.check_model(onnx.load(str(made)))
        entry = prepare_pack.manifest_entry(prepare_pack.MODELS[2], made)
        self.assertEqual(entry["identifier"], "sface-2021dec-coreml-1")
        self.assertEqual(entry["inputs"], [{"name": "image", "shape": [1, 3, 112, 112]}])
        self.assertEqual(entry["outputs"], [{"name": "embedding", "shape": [1, 128]}])
        with self.assertRaises(originals.Refusal):
            prepare_pack.make_embedder(made)  # no input named data

    def test_fuses_the_real_face_model(self):
        """Splits the merged model into two files in PyTorch's format and merges them again."""
        known = onnx.load(str(SHARED / "MiniFASNet.onnx"))
        paths = [self.folder / "27.pth", self.folder / "40.pth"]
        for path, branch in zip(paths, ("branch27", "branch40")):
            write_weights(path, unfused(known, branch))
        fused = minifasnet.fuse(*paths)
        self.assertEqual([value.name for value in fused.graph.output],
                         [value.name for value in known.graph.output])
        ours, theirs = convolutions(fused), convolutions(known)
        self.assertEqual(len(ours), len(theirs))
        for (kernel, bias, how), (kernel2, bias2, how2) in zip(ours, theirs):
            self.assertEqual(how, how2)
            np.testing.assert_allclose(kernel, kernel2, rtol=1e-5, atol=1e-7)
            np.testing.assert_allclose(bias, bias2, rtol=1e-5, atol=1e-6)
        kinds = [[node.op_type for node in model.graph.node if node.op_type not in
                  ("Gemm", "MatMul", "Constant")] for model in (fused, known)]
        self.assertEqual(*kinds)

        paths[0].write_bytes(paths[0].read_bytes()[:-1000])
        with self.assertRaises(originals.Refusal):
            minifasnet.fuse(*paths)

    def test_weights_can_make_nothing_but_tensors(self):
        evil = self.folder / "evil.pth"
        evil.write_bytes(pickle.dumps(os.getcwd))
        with self.assertRaises(originals.Refusal):
            minifasnet.read_weights(evil)


def arrays(model):
    return {tensor.name: numpy_helper.to_array(tensor) for tensor in model.graph.initializer}


def convolutions(model):
    weights = arrays(model)
    found = []
    for node in model.graph.node:
        if node.op_type == "Conv":
            how = {a.name: (list(a.ints) or a.i) for a in node.attribute if a.name != "dilations"}
            found.append((weights[node.input[1]], weights[node.input[2]], how))
    return found


def unfused(model, branch):
    """The branch's weights under PyTorch's names, with normalisations that only shift."""
    known, weights = arrays(model), OrderedDict()

    def norm(name, shift):
        weights[f"{name}.weight"] = np.full(len(shift), np.sqrt(1 + 1e-5), np.float32)
        weights[f"{name}.bias"] = shift
        weights[f"{name}.running_mean"] = np.zeros(len(shift), np.float32)
        weights[f"{name}.running_var"] = np.ones(len(shift), np.float32)

    for node in model.graph.node:
        if not node.input or not any(branch in end for end in [*node.input, *node.output]):
            continue
        name = node.input[1].removeprefix(branch + ".").removesuffix(".weight") if len(node.input) > 1 else ""
        if node.op_type == "Conv":
            weights[name + ".weight"] = known[node.input[1]]
            parent, last = name.rsplit(".", 1)
            norm(f"{parent}.bn" + last.removeprefix("fc").removeprefix("conv"), known[node.input[2]])
        elif node.op_type == "PRelu":
            path = node.output[0].removeprefix(f"/{branch}/").rsplit("/", 1)[0]
            parent = path.replace("/model/model.", ".model.").replace("/", ".")
            weights[parent + ".weight"] = known[node.input[1]].reshape(-1)
        elif node.op_type == "Gemm":
            weights["linear.weight"] = known[node.input[1]]
            norm("bn", known[node.input[2]])
        elif node.op_type == "MatMul":
            weights["prob.weight"] = np.ascontiguousarray(known[node.input[1]].T)
    return weights


def write_weights(path, weights):
    """In PyTorch's file format of 2020."""
    torch, utils = types.ModuleType("torch"), types.ModuleType("torch._utils")

    def rebuild(*_):
        raise NotImplementedError
    rebuild.__module__, rebuild.__name__, rebuild.__qualname__ = "torch._utils", "_rebuild_tensor_v2", "_rebuild_tensor_v2"
    utils._rebuild_tensor_v2 = rebuild

    class FloatStorage:
        pass
    FloatStorage.__module__, FloatStorage.__qualname__ = "torch", "FloatStorage"
    torch.FloatStorage = FloatStorage

    class Tensor:
        def __init__(self, key, values):
            self.key, self.values = key, values

        def __reduce__(self):
            strides = tuple(step // 4 for step in self.values.strides)
            return rebuild, (Storage(self.key, self.values.size), 0, self.values.shape, strides)

    class Storage:
        def __init__(self, key, count):
            self.key, self.count = key, count

    class Pickler(pickle.Pickler):
        def persistent_id(self, obj):
            if isinstance(obj, Storage):
                return ("storage", FloatStorage, obj.key, "cpu", obj.count, None)
            return None

    values = {str(i): np.ascontiguousarray(array, np.float32) for i, array in enumerate(weights.values())}
    sys.modules.update({"torch": torch, "torch._utils": utils})
    try:
        with open(path, "wb") as out:
            for head in (0x1950a86a20f9469cfc6c, 1001, {"little_endian": True}):
                pickle.dump(head, out, 2)
            Pickler(out, 2).dump(OrderedDict(
                ("module." + name, Tensor(key, values[key])) for name, key in zip(weights, values)))
            pickle.dump(list(values), out, 2)
            for array in values.values():
                out.write(array.size.to_bytes(8, "little") + array.tobytes())
    finally:
        del sys.modules["torch"], sys.modules["torch._utils"]


if __name__ == "__main__":
    unittest.main()
