"""Run inside Blender: blender -b --python-exit-code 1 --python add_on_test.py -- ZIP TOOL FOLDER

Installs the add-on from its archive, animates heads with the demo recording, and renders three
frames into FOLDER."""

import csv
import importlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time
import unittest

import bpy

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[2]
ZIP, TOOL, FOLDER = sys.argv[sys.argv.index("--") + 1:]
FOLDER = pathlib.Path(FOLDER).resolve()
sys.path.insert(0, str(HERE))
sys.dont_write_bytecode = True

import head as model  # beside this file

ADD_ON = "tessarin_mouth"
FPS = 24


def part(name):
    return importlib.import_module(f"{ADD_ON}.{name}")


def setUpModule():
    bpy.ops.preferences.addon_install(filepath=ZIP)
    bpy.ops.preferences.addon_enable(module=ADD_ON)
    for ending in ("wav", "txt"):
        shutil.copy(ROOT / "data" / "demo" / f"echo-test.{ending}", FOLDER / f"echo.{ending}")
    subprocess.run([TOOL, "align", FOLDER / "echo.wav", "--text-file", FOLDER / "echo.txt",
                    "--fps", str(FPS), "-q", "-o", FOLDER / "echo.json",
                    "-o", FOLDER / "echo.visemes.csv"], check=True)


def use_tool(path):
    bpy.context.preferences.addons[ADD_ON].preferences.tool_path = path


def columns():
    with open(FOLDER / "echo.visemes.csv", encoding="utf-8") as file:
        return [{name: float(value) for name, value in row.items()} for row in csv.DictReader(file)]


def keys_of(datablock):
    return {(curve.data_path, round(point.co[0])): point.co[1]
            for curve in datablock.animation_data.action.fcurves
            for point in curve.keyframe_points}


class AddOnTest(unittest.TestCase):
    def setUp(self):
        bpy.ops.wm.read_homefile(use_empty=True)
        bpy.context.scene.render.fps = FPS
        bpy.context.scene.render.fps_base = 1.0
        use_tool(TOOL)

    def make_head(self):
        head = model.make_head()
        bpy.context.view_layer.objects.active = head
        head.tessarin.audio = str(FOLDER / "echo.wav")
        return head

    def assert_refused(self, pattern, operator, **arguments):
        with self.assertRaisesRegex(RuntimeError, pattern):
            operator(**arguments)

    def test_keys_follow_the_tools_own_table(self):
        head = self.make_head()
        head.tessarin.start_frame = 11
        head.tessarin.tolerance = 0.02
        self.assertEqual(bpy.ops.tessarin.animate(), {"FINISHED"})
        self.assertEqual(head.tessarin.set, "visemes")
        action = head.data.shape_keys.animation_data.action
        rows = columns()
        self.assertGreater(len(rows), 500)
        for shape in model.MOUTHS:
            curve = action.fcurves.find(f'key_blocks["viseme_{shape}"].value')
            for i, row in enumerate(rows):
                self.assertAlmostEqual(curve.evaluate(11 + i), row[shape], delta=0.0202)
            self.assertEqual(curve.evaluate(11 + len(rows)), 0.0)
            self.assertLess(len(curve.keyframe_points), len(rows) * 0.7)

    def test_a_second_run_replaces_its_own_keys_only(self):
        head = self.make_head()
        bpy.ops.tessarin.load(filepath=str(FOLDER / "echo.json"))
        keys = head.data.shape_keys
        curve = keys.animation_data.action.fcurves.find('key_blocks["viseme_aa"].value')
        before = keys_of(keys)
        edited = next(point for point in curve.keyframe_points if 0.3 < point.co[1] < 0.9)
        edited_frame = round(edited.co[0])
        edited.co[1] = 0.123
        # One of the animator's keys stands where the second run wants to put one of its own.
        wanted = 100 + next(frame for name, frame in before
                            if name == curve.data_path and frame > 300)
        for frame, value in ((2000, 0.5), (-20, 0.75), (wanted, 0.321)):
            curve.keyframe_points.insert(frame, value)
        head.tessarin.start_frame = 101
        bpy.ops.tessarin.load(filepath=str(FOLDER / "echo.json"))
        after = keys_of(keys)
        path = curve.data_path
        kept = {(path, 2000): 0.5, (path, -20): 0.75, (path, wanted): 0.321,
                (path, edited_frame): 0.123}
        for place, value in kept.items():
            self.assertAlmostEqual(after[place], value, places=5)
        moved = {(name, frame + 100): value for (name, frame), value in before.items()}
        self.assertEqual({place for place in after if place not in kept},
                         {place for place in moved if place not in kept})

    def test_strips_are_animated_one_by_one_with_their_words(self):
        head = self.make_head()
        head.tessarin.source = "STRIP"
        head.tessarin.words = True
        editor = bpy.context.scene.sequence_editor_create()
        text = (FOLDER / "echo.txt").read_text(encoding="utf-8")
        for name, start in (("first", 1), ("second", 801)):
            strip = editor.sequences.new_sound(name, str(FOLDER / "echo.wav"), 1, start)
            strip.select = True
            bpy.data.texts.new(name).write(text)
        editor.sequences["second"].frame_offset_start = 60  # its first sentence is cut off
        bpy.data.texts["second"].clear()
        bpy.data.texts["second"].write(text[text.index(".") + 1:])
        bpy.ops.tessarin.animate()
        keys = head.data.shape_keys
        self.assertEqual(part("own_keys").owners(keys), ["first", "second"])
        frames = sorted(frame for _, frame in keys_of(keys))
        self.assertEqual(frames[0], 0)  # at rest before the first frame
        self.assertTrue(855 <= next(each for each in frames if each > 700) < 870, frames)
        words = {owner: [each for each in editor.sequences if each.get("tessarin_owner") == owner]
                 for owner in ("first", "second")}
        first = min(words["first"], key=lambda each: each.frame_final_start)
        self.assertEqual(first.text, "You")
        self.assertEqual(first.frame_final_start, 1 + round(0.255 * FPS))
        self.assertGreater(first.channel, 1)
        # With one of them deselected, the other's keys and words stay.
        before = keys_of(keys)
        editor.sequences["second"].select = False
        bpy.ops.tessarin.animate()
        self.assertEqual(keys_of(keys), before)
        self.assertEqual(len([each for each in editor.sequences if each.type == "TEXT"]),
                         len(words["first"]) + len(words["second"]))

    def test_bones_move_by_a_pose_library(self):
        bones = bpy.data.armatures.new("Bones")
        rig = bpy.data.objects.new("Rig", bones)
        bpy.context.scene.collection.objects.link(rig)
        bpy.context.view_layer.objects.active = rig
        bpy.ops.object.mode_set(mode="EDIT")
        bones.edit_bones.new("jaw").tail = (0, 0, 1)
        bpy.ops.object.mode_set(mode="OBJECT")
        path = 'pose.bones["jaw"].location'
        for name, place in (("aa", -0.2), ("oh", -0.1)):
            pose = bpy.data.actions.new(name)
            pose.fcurves.new(path, index=1).keyframe_points.insert(1, place)
        turn = bpy.data.actions["aa"].fcurves
        for index, value in enumerate((-0.8, 0.6, 0.0, 0.0)):  # the far side of a quaternion
            turn.new('pose.bones["jaw"].rotation_quaternion', index=index) \
                .keyframe_points.insert(1, value)
        rig.tessarin.tolerance = 0
        bpy.ops.tessarin.load(filepath=str(FOLDER / "echo.json"))
        fcurves = rig.animation_data.action.fcurves
        for i, row in enumerate(columns()):
            self.assertAlmostEqual(fcurves.find(path, index=1).evaluate(1 + i),
                                   -0.2 * row["aa"] - 0.1 * row["oh"], delta=2e-4)
            w = fcurves.find('pose.bones["jaw"].rotation_quaternion', index=0)
            self.assertAlmostEqual(w.evaluate(1 + i), 1 - 0.2 * row["aa"], delta=2e-4)

    def test_names_are_guessed(self):
        guess = part("names").guess_names
        self.assertEqual(guess("arkit", ["jawOpen", "mouthSmileLeft", "mouthClose"],
                               ["Jaw_Open", "mouthSmile_L", "mouthSmile_R"]),
                         {"jawOpen": "Jaw_Open", "mouthSmileLeft": "mouthSmile_L"})
        self.assertEqual(guess("vrm", ["aa", "ih", "ou", "ee", "oh"],
                               ["Fcl_MTH_A", "Fcl_MTH_I", "Fcl_MTH_U", "Fcl_BRW_Fun"]),
                         {"aa": "Fcl_MTH_A", "ih": "Fcl_MTH_I", "ou": "Fcl_MTH_U"})

    def test_failures_say_what_to_do(self):
        head = self.make_head()
        animate, load = bpy.ops.tessarin.animate, bpy.ops.tessarin.load
        use_tool("/nowhere/tessarin")
        self.assert_refused("not a program.*Preferences > Add-ons", animate)
        use_tool(TOOL)
        head.tessarin.text_from = "TYPED"
        self.assert_refused("text is empty", animate)
        head.tessarin.text_from = "BESIDE"
        shutil.copy(FOLDER / "echo.wav", FOLDER / "alone.wav")
        head.tessarin.audio = str(FOLDER / "alone.wav")
        self.assert_refused("write alone.txt beside", animate)
        head.tessarin.audio = str(FOLDER / "echo.txt")
        head.tessarin.text_from = "NONE"
        self.assert_refused("echo.txt", animate)
        result = json.loads((FOLDER / "echo.json").read_text(encoding="utf-8"))
        for change, pattern in (({"version": 2}, "install the add-on"),
                                ({"version": "x"}, "no version"),
                                ({"frames": [{"start_ms": "0"}]}, "frames that do not read")):
            (FOLDER / "bad.json").write_text(json.dumps({**result, **change}), encoding="utf-8")
            self.assert_refused(pattern, load, filepath=str(FOLDER / "bad.json"))
        (FOLDER / "bad.json").write_text("{", encoding="utf-8")
        self.assert_refused("is not JSON", load, filepath=str(FOLDER / "bad.json"))
        cube = bpy.data.objects.new("Cube", bpy.data.meshes.new("Cube"))
        bpy.context.scene.collection.objects.link(cube)
        bpy.context.view_layer.objects.active = cube
        self.assert_refused("no shape keys", animate)
        self.assertIsNone(head.data.shape_keys.animation_data)

    def test_a_search_reports_progress_and_can_be_cancelled(self):
        search = part("search")
        request = search.Request(FOLDER / "echo.wav", FPS, text_file=FOLDER / "echo.txt")
        running = search.Search(request, TOOL)
        running.start()
        deadline = time.monotonic() + 120
        while running.progress == 0 and not running.poll() and time.monotonic() < deadline:
            time.sleep(0.005)
        self.assertGreater(running.progress, 0)
        running.cancel()
        running.wait()
        self.assertEqual((running.result, running.error), (None, "cancelled"))

    @unittest.skipUnless(os.environ.get("TESSARIN_LIBRARY"), "TESSARIN_LIBRARY names no library")
    def test_the_python_package_gives_what_the_tool_gives(self):
        sys.path.append(str(ROOT / "bindings" / "python"))
        search = part("search")
        request = search.Request(FOLDER / "echo.wav", FPS, text_file=FOLDER / "echo.txt")
        running = search.Search(request, "")
        running.start()
        running.wait()
        self.assertEqual(running.error, "")
        expected = json.loads((FOLDER / "echo.json").read_text(encoding="utf-8"))
        self.assertEqual(len(running.result["frames"]), len(expected["frames"]))
        for frame, other in zip(running.result["frames"], expected["frames"]):
            self.assertEqual(frame["weights"].keys(), other["weights"].keys())

    def test_the_head_opens_its_mouth_in_the_picture(self):
        self.make_head()
        model.light_and_camera()
        bpy.ops.tessarin.load(filepath=str(FOLDER / "echo.json"))
        rows = columns()
        pictures = {}
        for shape in ("PP", "aa", "ou"):
            frame = 1 + max(range(len(rows)), key=lambda i, shape=shape: rows[i][shape])
            pictures[shape] = model.render(frame, str(FOLDER / f"{shape}.png"))
        model.save_row(list(pictures.values()), str(FOLDER / "mouths.png"))
        dark = {shape: model.dark_pixels(picture) for shape, picture in pictures.items()}
        self.assertGreater(dark["aa"], 2 * dark["ou"])
        self.assertGreater(dark["ou"], dark["PP"])


if __name__ == "__main__":
    unittest.main(argv=["add_on_test"], verbosity=2)
