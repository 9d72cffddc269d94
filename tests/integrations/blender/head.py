"""A plain head with a shape key for each viseme, and a camera on it."""

import math

import bmesh
import bpy

# Half the width and half the height of the mouth's opening, and how far the lips stand out.
REST = (0.30, 0.015, 0.0)
MOUTHS = {
    "PP": (0.27, -0.02, 0.02), "FF": (0.29, 0.02, -0.02), "TH": (0.30, 0.06, 0.0),
    "DD": (0.30, 0.06, 0.0), "kk": (0.30, 0.07, 0.0), "CH": (0.17, 0.08, 0.09),
    "SS": (0.34, 0.04, 0.0), "nn": (0.30, 0.05, 0.0), "RR": (0.19, 0.07, 0.06),
    "aa": (0.30, 0.22, 0.0), "E": (0.33, 0.13, 0.0), "ih": (0.36, 0.08, 0.0),
    "oh": (0.19, 0.18, 0.06), "ou": (0.11, 0.10, 0.11),
}
_AROUND = 32
_ACROSS = 10
_LIP = 0.055
_SIZE = (240, 280)
_CENTRE = (0.0, -1.02, -0.42)


def _lips(width, height, out):
    """A ring of lips, and the dark of the mouth in it."""
    x0, y0, z0 = _CENTRE
    points = []
    for i in range(_AROUND):
        angle = 2 * math.pi * i / _AROUND
        across, up = math.cos(angle), math.sin(angle)
        for j in range(_ACROSS):
            turn = 2 * math.pi * j / _ACROSS
            reach, depth = _LIP * math.cos(turn), _LIP * math.sin(turn)
            x = across * (width + reach)
            z = up * (max(height, -0.04) + 0.7 * reach + 0.045)
            points.append((x0 + x, y0 - out - depth + 0.35 * x * x, z0 + z))
    for i in range(_AROUND):
        angle = 2 * math.pi * i / _AROUND
        x = math.cos(angle) * width
        points.append((x0 + x, y0 - out - 0.005 + 0.35 * x * x,
                       z0 + math.sin(angle) * (max(height, -0.04) + 0.045)))
    return points


def _material(name, color):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    shader = next(each for each in material.node_tree.nodes if each.type == "BSDF_PRINCIPLED")
    shader.inputs["Base Color"].default_value = (*color, 1.0)
    shader.inputs["Roughness"].default_value = 0.6
    gloss = "Specular" if "Specular" in shader.inputs else "Specular IOR Level"
    shader.inputs[gloss].default_value = 0.0 if name == "dark" else 0.3
    return material


def _ball(mesh, centre, radius, material):
    start = len(mesh.verts)
    made = bmesh.ops.create_uvsphere(mesh, u_segments=32, v_segments=24, radius=1.0)
    for vertex in made["verts"]:
        vertex.co = [c + r * v for c, r, v in zip(centre, radius, vertex.co)]
    mesh.verts.ensure_lookup_table()
    for face in mesh.faces:
        if all(vertex.index == -1 or vertex in made["verts"] for vertex in face.verts):
            face.material_index = material
    return start


def make_head():
    mesh = bmesh.new()
    points = [mesh.verts.new(each) for each in _lips(*REST)]
    inner = points[_AROUND * _ACROSS:]
    for i in range(_AROUND):
        for j in range(_ACROSS):
            ring = [((i + a) % _AROUND) * _ACROSS + (j + b) % _ACROSS
                    for a, b in ((0, 0), (1, 0), (1, 1), (0, 1))]
            mesh.faces.new([points[each] for each in ring]).material_index = 1
    mesh.faces.new(inner).material_index = 2
    _ball(mesh, (0, 0, 0), (1.0, 1.0, 1.25), 0)
    for side in (-1, 1):
        _ball(mesh, (side * 0.36, -0.82, 0.3), (0.17, 0.17, 0.17), 3)
        _ball(mesh, (side * 0.36, -0.94, 0.3), (0.08, 0.08, 0.08), 2)
    data = bpy.data.meshes.new("Head")
    mesh.to_mesh(data)
    mesh.free()
    for name, color in (("skin", (0.72, 0.45, 0.33)), ("lips", (0.5, 0.08, 0.08)),
                        ("dark", (0.01, 0.0, 0.0)), ("white", (0.9, 0.9, 0.9))):
        data.materials.append(_material(name, color))
    for face in data.polygons:
        face.use_smooth = face.material_index != 2 or len(face.vertices) < 5
    head = bpy.data.objects.new("Head", data)
    bpy.context.scene.collection.objects.link(head)
    head.shape_key_add(name="Basis")
    for shape, mouth in MOUTHS.items():
        key = head.shape_key_add(name="viseme_" + shape)
        for i, place in enumerate(_lips(*mouth)):
            key.data[i].co = place
    return head


def light_and_camera():
    scene = bpy.context.scene
    camera = bpy.data.objects.new("Camera", bpy.data.cameras.new("Camera"))
    camera.location, camera.rotation_euler = (0, -4.7, -0.05), (math.pi / 2, 0, 0)
    scene.collection.objects.link(camera)
    scene.camera = camera
    for place, power in (((-2.5, -4, 3), 350), ((3, -4, 0), 120)):
        lamp = bpy.data.objects.new("Lamp", bpy.data.lights.new("Lamp", "POINT"))
        lamp.data.energy, lamp.data.shadow_soft_size, lamp.location = power, 1.0, place
        scene.collection.objects.link(lamp)
    world = bpy.data.worlds.new("World")
    world.use_nodes = True
    world.node_tree.nodes["Background"].inputs[0].default_value = (0.25, 0.3, 0.38, 1)
    scene.world = world
    scene.render.engine = "CYCLES"  # the one engine that needs no graphics card
    scene.cycles.samples = 16
    scene.cycles.use_denoising = False
    scene.render.resolution_x, scene.render.resolution_y = _SIZE
    scene.view_settings.view_transform = "Standard"


def render(frame, path):
    scene = bpy.context.scene
    scene.frame_set(frame)
    scene.render.filepath = path
    bpy.ops.render.render(write_still=True)
    image = bpy.data.images.load(path)
    pixels = list(image.pixels)
    bpy.data.images.remove(image)
    return pixels


def save_row(pictures, path):
    """The pictures side by side."""
    width, height = _SIZE
    row = bpy.data.images.new("Row", width * len(pictures), height)
    row.pixels = [value for y in range(height) for picture in pictures
                  for value in picture[4 * width * y:4 * width * (y + 1)]]
    row.filepath_raw, row.file_format = path, "PNG"
    row.save()


def dark_pixels(picture):
    """How many pixels around the mouth show its inside."""
    width, height = _SIZE
    places = (4 * (y * width + x) for y in range(int(height * 0.15), int(height * 0.5))
              for x in range(int(width * 0.25), int(width * 0.75)))
    return sum(max(picture[i:i + 3]) < 0.15 for i in places)
