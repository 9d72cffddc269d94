extends Reference
# Runs the tool for the recordings that have a text beside them.

const AUDIO := ["wav", "ogg", "mp3", "flac"]
const TEXT := ["txt", "srt", "vtt"]

var tool_path := "tessarin"
var messages := [] # what went wrong


# Makes line.tessarin of each line.wav with a line.txt, unless there is one that is newer than both.
# Returns how many were made.
func make_results(folder: String) -> int:
	var made := 0
	var directory := Directory.new()
	if directory.open(folder) != OK:
		messages.append("%s does not open" % folder)
		return 0
	directory.list_dir_begin(true, true)
	var name := directory.get_next()
	while name != "":
		var path := folder.plus_file(name)
		if directory.current_is_dir():
			if name != "addons":
				made += make_results(path)
		elif name.get_extension().to_lower() in AUDIO:
			made += int(_make_result(path))
		name = directory.get_next()
	return made


func _make_result(audio: String) -> bool:
	var files := File.new()
	var output := audio.get_basename() + ".tessarin"
	for ending in TEXT:
		var text: String = audio.get_basename() + "." + ending
		if files.file_exists(text):
			var newest := max(files.get_modified_time(audio), files.get_modified_time(text))
			if files.file_exists(output) and files.get_modified_time(output) >= newest:
				return false
			return _run(audio, text, output)
	return false


func _run(audio: String, text: String, output: String) -> bool:
	var said := []
	var code := OS.execute(tool_path, ["align", ProjectSettings.globalize_path(audio), "--text-file",
			ProjectSettings.globalize_path(text), "-q", "--fps", "60", "--format", "json", "-o",
			ProjectSettings.globalize_path(output)], true, said, true)
	if code == 0:
		return true
	if code == -1 or code == 127:
		messages.append("the program %s does not start: install tessarin, or name it in Project Settings > tessarin/program" % tool_path)
	else:
		messages.append("%s: %s" % [audio, PoolStringArray(said).join("").strip_edges()])
	return false
