"""Talking characters: keys the mouth of a head from a recording and its text."""

bl_info = {
    "name": "Tessarin",
    "author": "The Tessarin contributors",
    "version": (0, 1, 0),
    "blender": (3, 4, 0),
    "location": "3D View or Sequencer > Sidebar > Tessarin",
    "description": "Keys the mouth of a head from a recording of speech and its text",
    "category": "Animation",
}

import bpy

from . import operators, panel, settings

_CLASSES = (*settings.CLASSES, *operators.CLASSES, *panel.CLASSES)


def register():
    for each in _CLASSES:
        bpy.utils.register_class(each)
    bpy.types.Object.tessarin = bpy.props.PointerProperty(type=settings.TessarinSettings)


def unregister():
    del bpy.types.Object.tessarin
    for each in reversed(_CLASSES):
        bpy.utils.unregister_class(each)
