# SPDX-License-Identifier: Apache-2.0
"""Translates ONNX models as for the Mac and compares the computed outputs."""

import json
import os
import sys
import types
import unittest
from pathlib import Path
from unittest import mock

try:
    import numpy as np
    import onnx
    from onnx import TensorProto, helper, numpy_helper
except ImportError:
    print("Skipped: needs python3-onnx and python3-numpy.")
    sys.exit(0)

ROOT = Path(__file__).resolve().parents[2]
SHARED = Path(os.environ.get("MARROWBY_SHARED", ROOT.parent / "shared")) / "models"
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "Tools"))
from modelpack import coreml  # noqa: E402
from modelpack.originals import Refusal  # noqa: E402
from modelpack.steps import run, steps  # noqa: E402


def published_embedder(side=4, count=128):
    """A small model with the published face model's operations, and weights among its inputs."""
    random = np.random.default_rng(1)

    def weight(*shape):
        return random.uniform(0.5, 1, shape).astype(np.float32)
    weights = {"half": np.array([127.5], np.float32), "small": np.array([1 / 128], np.float32),
               "kernel": weight(4, 3, 1, 1), "slope": weight(4, 1, 1), "full": weight(4 * side * side, count),
               "bias": weight(count), "shape": np.array([1, -1])}
    for norm, size in (("a", 4), ("b", count)):
        weights |= {f"{norm}{i}": weight(size) for i in range(4)}
    nodes = [("Sub", ["image", "half"]), ("Mul", ["0", "small"]), ("Conv", ["1", "kernel"]),
             ("BatchNormalization", ["2", "a0", "a1", "a2", "a3"]), ("PRelu", ["3", "slope"]),
             ("Dropout", ["4"]), ("Reshape", ["5", "shape"]), ("Gemm", ["6", "full", "bias"]),
             ("BatchNormalization", ["7", "b0", "b1", "b2", "b3"])]
    graph = helper.make_graph(
        [helper.make_node(kind, ends, ["embedding" if i == 8 else str(i)])
         for i, (kind, ends) in enumerate(nodes)], "g",
        [helper.make_tensor_value_info(name, TensorProto.FLOAT, shape) for name, shape in
         [("image", [1, 3, side, side])] + [(name, value.shape) for name, value in weights.items()]],
        [helper.make_tensor_value_info("embedding", TensorProto.FLOAT, [1, count])],
        [numpy_helper.from_array(value, name) for name, value in weights.items()])
    model = helper.make_model(graph)
    helper.set_model_props(model, coreml.CONTRACTS[0].metadata)
    return model, weights


def pattern(side):
    channel, y, x = np.mgrid[:3, :side, :side]
    return ((channel * 79 + y * 31 + x * 17 + (x * y) % 29 * 3) % 256).astype(np.float32)[np.newaxis]


class PrepareCoreMLTest(unittest.TestCase):
    @unittest.skipUnless(SHARED.is_dir(), "needs the folder of models and media")
    def test_the_models_answer_as_they_are_known_to(self):
        known = json.loads((SHARED / "reference-outputs.json").read_text(encoding="utf-8"))
        crop = pattern(80)
        found = run(steps(onnx.load(str(SHARED / "MiniFASNet.onnx"))), {"crop27": crop, "crop40": crop[:, :, ::-1]})
        for name in coreml.CONTRACTS[1].outputs:
            np.testing.assert_allclose(found[name][0], known["MiniFASNet"][name], atol=1e-5)
        stand_in = onnx.load(str(SHARED / "Embedder128.onnx"))
        found = run(steps(stand_in), {"image": pattern(112)})["embedding"][0]
        np.testing.assert_allclose(found[:8], known["Embedder128"]["first8"], atol=1e-4)

        coreml.check(coreml.CONTRACTS[1], onnx.load(str(SHARED / "MiniFASNet.onnx")))
        with self.assertRaisesRegex(Refusal, "mobilefacenet-128-test-1, not sface-2021dec-coreml-1"):
            coreml.check(coreml.CONTRACTS[0], stand_in)

    def test_reads_the_operations_of_the_published_face_model(self):
        model, w = published_embedder()
        x = pattern(4)
        found = run(steps(model), {"image": x})["embedding"]

        def norm(values, name, shape):
            scale, shift, mean, variance = (w[f"{name}{i}"].reshape(shape) for i in range(4))
            return (values - mean) / np.sqrt(variance + 1e-5) * scale + shift
        y = np.einsum("oc,nchw->nohw", w["kernel"][:, :, 0, 0], (x - 127.5) / 128)
        y = norm(y, "a", (1, 4, 1, 1))
        y = np.where(y < 0, w["slope"] * y, y).reshape(1, -1) @ w["full"] + w["bias"]
        np.testing.assert_allclose(found, norm(y, "b", (1, -1)), rtol=1e-4)

        with self.assertRaisesRegex(Refusal, "other inputs"):
            coreml.check(coreml.CONTRACTS[0], model)
        coreml.check(coreml.CONTRACTS[0], published_embedder(112)[0])
        model.graph.node[4].op_type = "Elu"
        with self.assertRaisesRegex(Refusal, "can’t be converted: Elu"):
            steps(model)

    def test_names_what_to_install_before_it_begins(self):
        """Pretends to be a Mac with the given packages; None is a missing one."""
        packages = ["coremltools", "onnx", "PIL", "numpy"]
        libraries = [f"coremltools.{name}" for name in coreml.NATIVE]
        present = {name: types.ModuleType(name) for name in packages + libraries}
        python = ".".join(map(str, sys.version_info[:2]))
        cases = [({}, None), ({"coremltools": None}, r"^coremltools is missing: python3 -m pip install coremltools==9"),
                 ({"PIL": None}, "^PIL is missing: .* pillow"),
                 *(({name: None}, rf"can’t load .* in Python {python} .*{name}.*brew install python@3\.12 ")
                   for name in libraries)]
        for absent, sentence in cases:
            with self.subTest(absent), mock.patch.dict(sys.modules, present | absent), \
                    mock.patch.object(sys, "platform", "darwin"):
                if sentence is None:
                    coreml.tools()
                else:
                    self.assertRaisesRegex(Refusal, sentence, coreml.tools)


if __name__ == "__main__":
    unittest.main()
