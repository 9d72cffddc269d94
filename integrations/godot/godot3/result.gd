extends Reference
# A result of `tessarin align`, as JSON.

const VERSION := 1

var frames := []
var duration := 0.0 # in seconds


# Returns "" or what is wrong and what to do.
func open(path: String) -> String:
	var file := File.new()
	if file.open(path, File.READ) != OK:
		return "%s does not open" % path
	var parsed := JSON.parse(file.get_as_text())
	if parsed.error != OK:
		return "%s is not JSON: line %d: %s" % [path, parsed.error_line, parsed.error_string]
	return _take(parsed.result, path)


func _take(data, path: String) -> String:
	if typeof(data) != TYPE_DICTIONARY or typeof(data.get("version")) != TYPE_REAL:
		return ("%s is not a result of tessarin. If it is another kind of file, choose Keep File in the Import dock; " \
				+ "a result is made by tessarin align RECORDING --text-file TEXT -o RESULT.json") % path
	if data.version > VERSION:
		return "%s has version %d and this plug-in reads version %d: install the plug-in that came with your tessarin" \
				% [path, data.version, VERSION]
	if data.version < VERSION:
		return "%s has version %d, older than %d: make it again with a newer tessarin" % [path, data.version, VERSION]
	if typeof(data.get("frames")) != TYPE_ARRAY or typeof(data.get("duration_ms")) != TYPE_REAL:
		return "%s has no frames: make it again" % path
	for frame in data.frames:
		if not _is_frame(frame):
			return "%s has frames that do not read: make it again" % path
	frames = data.frames
	duration = data.duration_ms / 1000.0
	return ""


func _is_frame(frame) -> bool:
	if typeof(frame) != TYPE_DICTIONARY or typeof(frame.get("start_ms")) != TYPE_REAL \
			or typeof(frame.get("end_ms")) != TYPE_REAL or typeof(frame.get("weights")) != TYPE_DICTIONARY:
		return false
	for weight in frame.weights.values():
		if typeof(weight) != TYPE_REAL:
			return false
	return true
