extends RefCounted
# Makes an Animation with a blend-shape track for each shape of a face.

const ShapeMap := preload("shape_map.gd")
const Result := preload("result.gd")
const Reduction := preload("reduction.gd")

var error := ""


# `options`: set, map (a path; empty: that of the set), node (path of the MeshInstance3D from the root
# of the AnimationPlayer), prefix (before the names of blend shapes), names ("aa=Mouth_A, PP=Mouth_M"),
# strength and tolerance. Returns null and leaves an `error` when that fails.
func make(path: String, options: Dictionary) -> Animation:
	var map := ShapeMap.new()
	var map_path: String = options.map
	if map_path == "":
		map_path = (get_script() as Script).resource_path.get_base_dir() + "/shapes/%s.shapes" % options.set
	error = map.open(map_path)
	var result := Result.new()
	if error == "":
		error = result.open(path)
	if error != "":
		return null
	var names := read_names(options.names)
	var keys := _keys(result, map)
	var animation := Animation.new()
	animation.length = maxf(result.duration, 0.001)
	for shape in map.shapes:
		if keys.has(shape):
			_add_track(animation, names.get(shape, options.prefix + shape), keys[shape], options)
	return animation


# A key at the middle of each frame, which is what the weights of a frame are of.
func _keys(result: Result, map: ShapeMap) -> Dictionary:
	var keys := {}
	var shown := []
	for frame: Dictionary in result.frames:
		shown.append(map.mix(frame.weights))
		for shape: String in shown[-1]:
			keys[shape] = []
	for shape: String in keys:
		for i in range(result.frames.size()):
			var frame: Dictionary = result.frames[i]
			keys[shape].append(Vector2((frame.start_ms + frame.end_ms) / 2000.0, shown[i].get(shape, 0.0)))
	return keys


func _add_track(animation: Animation, blend_shape: String, keys: Array, options: Dictionary) -> void:
	var track := animation.add_track(Animation.TYPE_BLEND_SHAPE)
	animation.track_set_path(track, NodePath("%s:%s" % [options.node, blend_shape]))
	animation.track_set_interpolation_type(track, Animation.INTERPOLATION_LINEAR)
	for key: Vector2 in Reduction.reduce(keys, options.tolerance):
		animation.blend_shape_track_insert_key(track, key.x, options.strength * key.y)


static func read_names(text: String) -> Dictionary:
	var names := {}
	for pair in text.split(",", false):
		var parts := pair.split("=")
		if parts.size() == 2:
			names[parts[0].strip_edges()] = parts[1].strip_edges()
	return names
