"""The buttons."""

import bpy

from . import settings as options
from .channels import key_channels, make_keys, pose_channels
from .own_keys import replace_keys
from .result import ResultError, load_result, warning_of
from .search import Search, SearchError, add_package_folder, find_tool
from .shape_map import ShapeMapError, load_shape_map
from .speech import Speech, collect_speeches, scene_fps
from .word_strips import show_words

_POLL_SECONDS = 0.1


def _tool(context) -> str:
    preferences = context.preferences.addons[__package__].preferences
    add_package_folder(bpy.path.abspath(preferences.package_folder))
    return find_tool(bpy.path.abspath(preferences.tool_path))


def _channels(target):
    """The datablock that is animated, and its channels. Raises SearchError."""
    mapping = target.tessarin.mapping
    if target.type == "ARMATURE":
        poses = {each.name: (each.pose, each.factor) for each in mapping if each.pose}
        channels = pose_channels(poses)
        datablock = target
    else:
        known = set(options.key_names(target))
        keys = {each.name: (each.key, each.factor) for each in mapping if each.key in known}
        channels = key_channels(keys, bpy.utils.escape_identifier)
        datablock = getattr(target.data, "shape_keys", None)
    if datablock is None:
        raise SearchError(f"{target.name} has no shape keys: add some, or choose an armature "
                          "with poses")
    if not channels:
        raise SearchError("No shape has a key or a pose: press Guess, or choose them in the list")
    return datablock, channels


def apply_result(scene, target, name: str, result: dict, start_frame: float) -> int:
    """Writes the keys of one speech; returns how many. Raises SearchError or ShapeMapError."""
    datablock, channels = _channels(target)
    keys = make_keys(result, load_shape_map(target.tessarin.set), channels, scene_fps(scene),
                     start_frame, target.tessarin.tolerance)
    return replace_keys(datablock, name, keys, f"{target.name} mouth")


class TESSARIN_OT_guess(bpy.types.Operator):
    """Find the shape keys, or the poses, of the mouth by their names"""

    bl_idname = "tessarin.guess"
    bl_label = "Guess"
    bl_options = {"REGISTER", "UNDO"}

    @classmethod
    def poll(cls, context):
        return context.object is not None

    def execute(self, context):
        try:
            found = options.guess_set(context.object)
        except ShapeMapError as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        if not found:
            self.report({"WARNING"}, "No name is one of a mouth shape: choose them in the list")
        return {"FINISHED"}


class TESSARIN_OT_animate(bpy.types.Operator):
    """Find when each sound is spoken, and key the mouth of the active object. Keys that the last
    run has made are replaced, all others stay. Esc cancels"""

    bl_idname = "tessarin.animate"
    bl_label = "Animate the mouth"
    bl_options = {"REGISTER", "UNDO"}

    @classmethod
    def poll(cls, context):
        return context.object is not None

    def _begin(self, context) -> bool:
        self._target, self._scene = context.object, context.scene
        self._search, self._failures, self._written = None, [], 0
        try:
            if not self._target.tessarin.mapping:
                options.guess_set(self._target)
            _channels(self._target)
            self._tool = _tool(context)
            self._waiting: list[Speech] = collect_speeches(context, self._target)
        except (SearchError, ShapeMapError) as error:
            self.report({"ERROR"}, str(error))
            return False
        self._count = len(self._waiting)
        return True

    def _start_next(self) -> None:
        self._speech = self._waiting.pop(0)
        self._search = Search(self._speech.request, self._tool)
        self._search.start()

    def _take(self) -> None:
        speech, search = self._speech, self._search
        if search.error:
            self._failures.append(f"{speech.name}: {search.error}")
            return
        try:
            self._written += apply_result(self._scene, self._target, speech.name, search.result,
                                          speech.start_frame)
        except (SearchError, ShapeMapError) as error:
            self._failures.append(f"{speech.name}: {error}")
            return
        if self._target.tessarin.words:
            show_words(self._scene, speech.name, search.result, scene_fps(self._scene),
                       speech.start_frame, self._sound_channel(speech))
        if warning_of(search.result):
            self.report({"WARNING"}, f"{speech.name}: {warning_of(search.result)}")

    def _sound_channel(self, speech: Speech) -> int:
        strip = self._scene.sequence_editor_create().sequences_all.get(speech.strip_name)
        return strip.channel if strip else 0

    def _end(self) -> set:
        for each in self._failures:
            self.report({"ERROR"}, each)
        done = self._count - len(self._failures)
        if not done:
            return {"CANCELLED"}
        self.report({"INFO"}, f"{self._written} keys for {done} of {self._count} recordings")
        return {"FINISHED"}

    def execute(self, context):
        """Waits for the search: for scripts, and where there is no window."""
        if not self._begin(context):
            return {"CANCELLED"}
        while self._waiting:
            self._start_next()
            self._search.wait()
            self._take()
        return self._end()

    def invoke(self, context, _event):
        if not self._begin(context):
            return {"CANCELLED"}
        self._start_next()
        manager = context.window_manager
        manager.progress_begin(0, 100)
        self._timer = manager.event_timer_add(_POLL_SECONDS, window=context.window)
        manager.modal_handler_add(self)
        return {"RUNNING_MODAL"}

    def modal(self, context, event):
        if event.type == "ESC":
            self._waiting.clear()
            self._search.cancel()
            return {"RUNNING_MODAL"}
        if event.type != "TIMER":
            return {"PASS_THROUGH"}
        self._show_progress(context)
        if not self._search.poll():
            return {"PASS_THROUGH"}
        if self._search.is_cancelled:
            self._clean_up(context)
            self.report({"WARNING"}, "Cancelled")
            return {"FINISHED"} if self._written else {"CANCELLED"}
        self._take()
        if self._waiting:
            self._start_next()
            return {"RUNNING_MODAL"}
        self._clean_up(context)
        return self._end()

    def _show_progress(self, context) -> None:
        number = self._count - len(self._waiting)
        context.window_manager.progress_update(100 * self._search.progress)
        context.workspace.status_text_set(
            f"Tessarin: {self._speech.name} ({number} of {self._count}), "
            f"{100 * self._search.progress:.0f} %    Esc cancels")

    def _clean_up(self, context) -> None:
        context.window_manager.event_timer_remove(self._timer)
        context.window_manager.progress_end()
        context.workspace.status_text_set(None)

    def cancel(self, context):
        """Blender closes the window."""
        self._search.cancel()
        self._clean_up(context)


class TESSARIN_OT_load(bpy.types.Operator):
    """Key the mouth of the active object by a result that was made before"""

    bl_idname = "tessarin.load"
    bl_label = "From a result (.json)"
    bl_options = {"REGISTER", "UNDO"}

    filepath: bpy.props.StringProperty(subtype="FILE_PATH")
    filter_glob: bpy.props.StringProperty(default="*.json", options={"HIDDEN"})

    @classmethod
    def poll(cls, context):
        return context.object is not None

    def invoke(self, context, _event):
        context.window_manager.fileselect_add(self)
        return {"RUNNING_MODAL"}

    def execute(self, context):
        import pathlib
        path = pathlib.Path(bpy.path.abspath(self.filepath))
        target = context.object
        try:
            if not target.tessarin.mapping:
                options.guess_set(target)
            written = apply_result(context.scene, target, path.name, load_result(path),
                                   target.tessarin.start_frame)
        except (ResultError, SearchError, ShapeMapError) as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        self.report({"INFO"}, f"{written} keys")
        return {"FINISHED"}


CLASSES = (TESSARIN_OT_guess, TESSARIN_OT_animate, TESSARIN_OT_load)
