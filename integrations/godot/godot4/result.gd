extends RefCounted
# A result of `tessarin align`, as JSON.

const VERSION := 1

var frames := []
var duration := 0.0 # in seconds


# Returns "" or what is wrong and what to do.
func open(path: String) -> String:
	var file := FileAccess.open(path, FileAccess.READ)
	if file == null:
		return "%s does not open" % path
	var json := JSON.new()
	if json.parse(file.get_as_text()) != OK:
		return "%s is not JSON: line %d: %s" % [path, json.get_error_line(), json.get_error_message()]
	return _take(json.data, path)


func _take(data: Variant, path: String) -> String:
	if not data is Dictionary or not _is_number(data.get("version")):
		return ("%s is not a result of tessarin. If it is another kind of file, choose Keep File in the Import dock; " \
				+ "a result is made by tessarin align RECORDING --text-file TEXT -o RESULT.json") % path
	if data.version > VERSION:
		return "%s has version %d and this plug-in reads version %d: install the plug-in that came with your tessarin" \
				% [path, data.version, VERSION]
	if data.version < VERSION:
		return "%s has version %d, older than %d: make it again with a newer tessarin" % [path, data.version, VERSION]
	if not data.get("frames") is Array or not _is_number(data.get("duration_ms")):
		return "%s has no frames: make it again" % path
	for frame: Variant in data.frames:
		if not _is_frame(frame):
			return "%s has frames that do not read: make it again" % path
	frames = data.frames
	duration = data.duration_ms / 1000.0
	return ""


func _is_frame(frame: Variant) -> bool:
	return frame is Dictionary and _is_number(frame.get("start_ms")) and _is_number(frame.get("end_ms")) \
			and frame.get("weights") is Dictionary and frame.weights.values().all(_is_number)


func _is_number(value: Variant) -> bool:
	return value is float or value is int
