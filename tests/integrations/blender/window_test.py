"""Run inside Blender with a window: blender --python window_test.py -- ZIP TOOL FOLDER

Presses the button as a user does: the search runs beside Blender, Esc ends it. FOLDER/window.txt says
`passed`, or what failed; FOLDER/panel.png shows the panel. add_on_test.py has left a recording there."""

import pathlib
import sys
import time
import traceback

import bpy

HERE = pathlib.Path(__file__).resolve().parent
ZIP, TOOL, FOLDER = sys.argv[sys.argv.index("--") + 1:]
FOLDER = pathlib.Path(FOLDER).resolve()
sys.path.insert(0, str(HERE))
sys.dont_write_bytecode = True

import head as model

ADD_ON = "tessarin_mouth"


def view_context():
    window = bpy.context.window_manager.windows[0]
    area = next(each for each in window.screen.areas if each.type == "VIEW_3D")
    region = next(each for each in area.regions if each.type == "WINDOW")
    return {"window": window, "screen": window.screen, "area": area, "region": region,
            "space_data": area.spaces.active, "scene": window.scene,
            "view_layer": window.view_layer, "workspace": window.workspace}


def press_the_button():
    override = view_context()
    with bpy.context.temp_override(**override):
        return bpy.ops.tessarin.animate("INVOKE_DEFAULT")


def has_action(head):
    return head.data.shape_keys.animation_data is not None


def wait_until(done, what):
    """Steps of the script go on as soon as `done`, while Blender handles its events."""
    deadline = time.monotonic() + 60
    while not done():
        if time.monotonic() > deadline:
            raise AssertionError(f"{what} did not come")
        yield 0.05


def script():
    bpy.ops.preferences.addon_install(filepath=ZIP)
    bpy.ops.preferences.addon_enable(module=ADD_ON)
    bpy.context.preferences.addons[ADD_ON].preferences.tool_path = TOOL
    for each in list(bpy.data.objects):
        bpy.data.objects.remove(each)
    override = view_context()
    with bpy.context.temp_override(**override):
        head = model.make_head()
        override["view_layer"].objects.active = head
        head.tessarin.audio = str(FOLDER / "echo.wav")
        bpy.ops.tessarin.guess()
        override["space_data"].show_region_ui = True
    yield 0.5

    begin = time.monotonic()
    assert press_the_button() == {"RUNNING_MODAL"}
    assert time.monotonic() - begin < 0.3, "the button waits for the search"
    yield from wait_until(lambda: has_action(head), "an action")
    curves = head.data.shape_keys.animation_data.action.fcurves
    assert len(curves) == len(model.MOUTHS), len(curves)

    head.data.shape_keys.animation_data_clear()
    started = []
    search = sys.modules[ADD_ON + ".search"].Search
    start = search.start
    search.start = lambda self: (started.append(self), start(self))
    assert press_the_button() == {"RUNNING_MODAL"}
    override["window"].event_simulate(type="ESC", value="PRESS", x=300, y=300)
    override["window"].event_simulate(type="ESC", value="RELEASE", x=300, y=300)
    yield from wait_until(lambda: started[0].poll(), "the end of a search")
    yield 1.0
    assert started[0].is_cancelled and not has_action(head), "Esc does not cancel"

    head.tessarin.audio, head.tessarin.active = "//line.wav", 1
    # The tab of the add-on is the lowest one of the sidebar.
    for kind, value in (("MOUSEMOVE", "NOTHING"), ("LEFTMOUSE", "PRESS"), ("LEFTMOUSE", "RELEASE")):
        override["window"].event_simulate(type=kind, value=value, x=1044, y=550)
        yield 0.3
    yield 1.0
    with bpy.context.temp_override(**override):
        bpy.ops.screen.screenshot(filepath=str(FOLDER / "panel.png"))


def run():
    global steps
    try:
        return next(steps)
    except StopIteration:
        outcome = "passed"
    except BaseException:
        outcome = traceback.format_exc()
    (FOLDER / "window.txt").write_text(outcome + "\n", encoding="utf-8")
    bpy.ops.wm.quit_blender()
    return None


bpy.context.preferences.view.show_splash = False
steps = script()
bpy.app.timers.register(run, first_interval=1.0)
