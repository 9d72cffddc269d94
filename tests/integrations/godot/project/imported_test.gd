extends SceneTree
# godot3-server --path PROJECT -s imported_test.gd: after the editor has imported line.json.


func _initialize() -> void:
	var animation: Animation = load("res://line.json") as Animation
	var track := animation.find_track(".:blend_shapes/aa") if animation != null else -1
	var highest := 0.0
	for i in range(animation.track_get_key_count(track) if track >= 0 else 0):
		highest = max(highest, animation.track_get_key_value(track, i))
	print("imported: ", animation, ", aa reaches ", highest)
	quit(0 if highest > 0.5 and abs(animation.length - 21.982) < 0.001 else 1)
