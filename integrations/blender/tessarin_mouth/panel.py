"""The panel Tessarin in the sidebar of the 3-D view and of the sequencer."""

from __future__ import annotations

import bpy


class TESSARIN_UL_shapes(bpy.types.UIList):
    def draw_item(self, _context, layout, _data, item, _icon, _active_data, _active_name):
        target = item.id_data
        layout.use_property_split = layout.use_property_decorate = False
        row = layout.split(factor=0.2, align=True)
        row.label(text=item.name)
        keys = getattr(target.data, "shape_keys", None)
        if target.type == "ARMATURE":
            row.prop(item, "pose", text="")
        elif keys is not None:
            row.prop_search(item, "key", keys, "key_blocks", text="")


class _Panel:
    bl_label = "Tessarin"
    bl_category = "Tessarin"
    bl_region_type = "UI"

    @classmethod
    def poll(cls, context):
        return context.object is not None

    def draw(self, context):
        layout, settings = self.layout, context.object.tessarin
        layout.use_property_split = True
        layout.use_property_decorate = False  # none of these is animated
        layout.row().prop(settings, "source", expand=True)
        if settings.source == "FILE":
            layout.prop(settings, "audio")
            layout.prop(settings, "start_frame")
        layout.prop(settings, "text_from")
        if settings.text_from == "BLOCK":
            layout.prop(settings, "text_block")
        elif settings.text_from == "TYPED":
            layout.prop(settings, "text")
        row = layout.row(align=True)
        row.prop(settings, "set")
        row.operator("tessarin.guess", text="", icon="VIEWZOOM")
        layout.template_list("TESSARIN_UL_shapes", "", settings, "mapping", settings, "active")
        if settings.active < len(settings.mapping):
            item = settings.mapping[settings.active]
            layout.prop(item, "factor", text=f"Factor of {item.name}")
        for name in ("strength", "tolerance", "words"):
            layout.prop(settings, name)
        layout.operator("tessarin.animate", icon="PLAY")
        layout.operator("tessarin.load", icon="FILE")


class TESSARIN_PT_view(_Panel, bpy.types.Panel):
    bl_space_type = "VIEW_3D"


class TESSARIN_PT_sequencer(_Panel, bpy.types.Panel):
    bl_space_type = "SEQUENCE_EDITOR"


CLASSES = (TESSARIN_UL_shapes, TESSARIN_PT_view, TESSARIN_PT_sequencer)
