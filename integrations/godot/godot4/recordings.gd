extends RefCounted
# Runs the tool for the recordings that have a text beside them.

const AUDIO := ["wav", "ogg", "mp3", "flac"]
const TEXT := ["txt", "srt", "vtt"]

var tool_path := "tessarin"
var messages: Array[String] = [] # what went wrong


# Makes line.tessarin of each line.wav with a line.txt, unless there is one that is newer than both.
# Returns how many were made.
func make_results(folder: String) -> int:
	var made := 0
	for name in DirAccess.get_directories_at(folder):
		if name != "addons" and not name.begins_with("."):
			made += make_results(folder.path_join(name))
	for name in DirAccess.get_files_at(folder):
		if name.get_extension().to_lower() in AUDIO:
			made += int(_make_result(folder.path_join(name)))
	return made


func _make_result(audio: String) -> bool:
	var output := audio.get_basename() + ".tessarin"
	for ending: String in TEXT:
		var text := audio.get_basename() + "." + ending
		if FileAccess.file_exists(text):
			var newest := maxi(FileAccess.get_modified_time(audio), FileAccess.get_modified_time(text))
			if FileAccess.file_exists(output) and FileAccess.get_modified_time(output) >= newest:
				return false
			return _run(audio, text, output)
	return false


func _run(audio: String, text: String, output: String) -> bool:
	var said := []
	var code := OS.execute(tool_path, ["align", ProjectSettings.globalize_path(audio), "--text-file",
			ProjectSettings.globalize_path(text), "-q", "--fps", "60", "--format", "json", "-o",
			ProjectSettings.globalize_path(output)], said, true)
	if code == 0:
		return true
	if code == -1 or code == 127:
		messages.append("the program %s does not start: install tessarin, or name it in Project Settings > tessarin/program" % tool_path)
	else:
		messages.append("%s: %s" % [audio, "".join(PackedStringArray(said)).strip_edges()])
	return false
