"""What the user chooses: on the add-on, on an object, and on the scene."""

import bpy
from bpy.props import (BoolProperty, CollectionProperty, EnumProperty, FloatProperty, IntProperty,
                       PointerProperty, StringProperty)

from .shape_map import SETS


class TessarinPreferences(bpy.types.AddonPreferences):
    bl_idname = __package__

    tool_path: StringProperty(
        name="Program", subtype="FILE_PATH",
        description="The program tessarin; empty: the one on PATH, else the Python package")
    package_folder: StringProperty(
        name="Python package", subtype="DIR_PATH",
        description="The folder that has the Python package tessarin, if Blender's own Python has "
                    "it not; used when there is no program")

    def draw(self, _context):
        self.layout.prop(self, "tool_path")
        self.layout.prop(self, "package_folder")


class TessarinShape(bpy.types.PropertyGroup):
    """Which shape key or pose shows the shape `name`."""

    key: StringProperty(name="Shape key", description="Empty: this shape is not shown")
    pose: PointerProperty(name="Pose", type=bpy.types.Action,
                          description="An action whose first frame is the pose of the shape")
    factor: FloatProperty(name="Factor", default=1.0, soft_min=0.0, soft_max=2.0,
                          description="Value of the key, or share of the pose, at the full shape")


def _new_set(settings, _context):
    fill_mapping(settings.id_data)


class TessarinSettings(bpy.types.PropertyGroup):
    source: EnumProperty(
        name="Sound", default="FILE",
        items=(("FILE", "File", "A recording on disk"),
               ("STRIP", "Strips", "The selected sound strips of the sequencer")))
    audio: StringProperty(name="Recording", subtype="FILE_PATH")
    start_frame: IntProperty(name="Start", default=1, description="Frame at which the sound begins")
    text_from: EnumProperty(
        name="Text", default="BESIDE",
        items=(("BESIDE", "Beside the recording",
                "A file of the recording's name that ends in .txt, .srt or .vtt; or a text block "
                "of the strip's name"),
               ("BLOCK", "Text block", "A text of the text editor"),
               ("TYPED", "Typed", "What is typed here"),
               ("NONE", "None", "Hear the phonemes without a text; less exact")))
    text_block: PointerProperty(name="Text block", type=bpy.types.Text)
    text: StringProperty(name="Text", description="What is said in the recording")
    strength: FloatProperty(name="Strength", default=1.0, min=0.0, max=4.0, soft_max=2.0,
                            description="How far the mouth leaves rest, lips and teeth excepted")
    tolerance: FloatProperty(name="Tolerance", default=0.01, min=0.0, soft_max=0.1, precision=3,
                             description="How far a curve may be from the track, to have fewer "
                                         "keys; 0 keeps one for each bend")
    words: BoolProperty(name="Word strips", default=False,
                        description="Preview the words as text strips above the sound in the "
                                    "sequencer")
    set: EnumProperty(name="Shapes", items=[(each, each, "") for each in SETS], update=_new_set)
    mapping: CollectionProperty(type=TessarinShape)
    active: IntProperty()


def key_names(target) -> list[str]:
    """The names of an object's shape keys but for the basis."""
    keys = getattr(target.data, "shape_keys", None)
    if keys is None:
        return []
    return [block.name for block in keys.key_blocks if block != keys.reference_key]


def pose_actions() -> dict[str, object]:
    """Actions that move bones, by their names."""
    from .channels import action_curves
    return {action.name: action for action in bpy.data.actions
            if any(curve.data_path.startswith("pose.") for curve in action_curves(action))}


def fill_mapping(target) -> int:
    """Guesses a key, or a pose, for each shape of the set; returns how many were found."""
    from .names import guess_names
    from .shape_map import load_shape_map
    settings = target.tessarin
    shapes = load_shape_map(settings.set).shapes
    poses = pose_actions() if target.type == "ARMATURE" else {}
    found = guess_names(settings.set, shapes, poses or key_names(target))
    settings.mapping.clear()
    for shape in shapes:
        item = settings.mapping.add()
        item.name = shape
        if poses:
            item.pose = poses.get(found.get(shape))
        else:
            item.key = found.get(shape, "")
    return len(found)


def guess_set(target) -> int:
    """Chooses the set of which the object shows most shapes, and fills the mapping. Returns how
    many shapes were found."""
    from .names import guess_names
    from .shape_map import load_shape_map
    names = list(pose_actions()) if target.type == "ARMATURE" else key_names(target)
    found = {each: len(guess_names(each, load_shape_map(each).shapes, names)) for each in SETS}
    target.tessarin.set = max(SETS, key=lambda each: found[each])  # fills the mapping
    return len([item for item in target.tessarin.mapping if item.key or item.pose])


CLASSES = (TessarinPreferences, TessarinShape, TessarinSettings)
