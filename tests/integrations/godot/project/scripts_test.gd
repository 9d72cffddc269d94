extends SceneTree
# godot3-server --path PROJECT -s scripts_test.gd: what the plug-in does without the editor. The program
# is at program.txt, the tool's own table at line.visemes.csv.

const AnimationMaker := preload("res://addons/tessarin/animation_maker.gd")
const Recordings := preload("res://addons/tessarin/recordings.gd")
const LiveMouth := preload("res://addons/tessarin/live_mouth.gd")
const DEFAULTS := {"set": "visemes", "map": "", "node": "Head", "prefix": "viseme_", "names": "",
		"strength": 1.0, "tolerance": 0.01}

var checks := 0
var failures := 0


func check(holds: bool, what: String) -> void:
	checks += 1
	if not holds:
		failures += 1
		print("FAILED: ", what)


func read(path: String) -> String:
	var file := File.new()
	check(file.open(path, File.READ) == OK, path)
	return file.get_as_text()


func write(path: String, text: String) -> void:
	var file := File.new()
	file.open(path, File.WRITE)
	file.store_string(text)
	file.close()


func table() -> Array:
	var rows := []
	for line in read("res://line.visemes.csv").split("\n", false):
		rows.append(line.split(","))
	return rows


# The value of a linear track between its keys.
func value(animation: Animation, track: int, time: float) -> float:
	var last := animation.track_get_key_count(track) - 1
	var i := 0
	while i < last - 1 and animation.track_get_key_time(track, i + 1) < time:
		i += 1
	var from := animation.track_get_key_time(track, i)
	var share := (time - from) / (animation.track_get_key_time(track, i + 1) - from)
	return lerp(animation.track_get_key_value(track, i), animation.track_get_key_value(track, i + 1), share)


func test_animation_follows_the_tools_table() -> void:
	var maker := AnimationMaker.new()
	var animation := maker.make("res://line.json", DEFAULTS)
	check(maker.error == "", maker.error)
	var rows := table()
	var head: PoolStringArray = rows[0]
	var frames: Array = parse_json(read("res://line.json")).frames
	check(rows.size() == frames.size() + 1 and frames.size() > 500, "frames")
	for column in range(1, head.size()):
		var track := animation.find_track("Head:blend_shapes/viseme_" + head[column])
		check(track >= 0, head[column])
		check(animation.track_get_key_count(track) < 0.8 * frames.size(), "keys of " + head[column])
		var worst := 0.0
		for i in range(frames.size()):
			var time: float = (frames[i].start_ms + frames[i].end_ms) / 2000.0
			worst = max(worst, abs(value(animation, track, time) - float(rows[i + 1][column])))
		check(worst <= 0.0102, "%s is off by %f" % [head[column], worst])
	var named: Dictionary = DEFAULTS.duplicate()
	named.names = "aa=Mouth A, PP = Mouth_M"
	named.strength = 0.5
	var half := maker.make("res://line.json", named)
	var track := half.find_track("Head:blend_shapes/Mouth A")
	check(track >= 0 and half.find_track("Head:blend_shapes/Mouth_M") >= 0, "names")
	var whole := animation.find_track("Head:blend_shapes/viseme_aa")
	check(abs(half.track_get_key_value(track, 3) - 0.5 * animation.track_get_key_value(whole, 3)) < 1e-6, "strength")


func test_failures_say_what_to_do() -> void:
	var maker := AnimationMaker.new()
	for case in [["{\"version\": 2}", "install the plug-in"], ["{\"version\": 0}", "newer tessarin"], ["{}", "Keep File"],
			["[1]", "Keep File"], ["{", "is not JSON"], ["{\"version\": 1}", "no frames"],
			["{\"version\": 1, \"duration_ms\": 5, \"frames\": [{\"start_ms\": 1}]}", "do not read"]]:
		write("user://bad.json", case[0])
		check(maker.make("user://bad.json", DEFAULTS) == null and case[1] in maker.error, maker.error)
	write("user://bad.shapes", "shapes A\nAA B 1\n")
	var own: Dictionary = DEFAULTS.duplicate()
	own.map = "user://bad.shapes"
	check(maker.make("res://line.json", own) == null and "line 2" in maker.error, maker.error)


func test_recordings_are_aligned_once(program: String) -> void:
	var recordings := Recordings.new()
	recordings.tool_path = program
	var text := read("res://line.txt")
	check(recordings.make_results("res://recordings") == 1, "one recording has a text")
	check(recordings.messages.empty(), str(recordings.messages))
	check(parse_json(read("res://recordings/said.tessarin")).words.size() == 68, "words")
	check(recordings.make_results("res://recordings") == 0, "it is up to date")
	recordings.tool_path = "/nowhere/tessarin"
	Directory.new().remove("res://recordings/said.tessarin")
	check(recordings.make_results("res://recordings") == 0, "no program")
	check(recordings.messages.size() == 1 and "tessarin/program" in recordings.messages[0], str(recordings.messages))


func samples() -> PoolVector2Array:
	var file := File.new()
	file.open("res://line.wav", File.READ)
	file.seek(44)
	var read := PoolVector2Array()
	while file.get_position() + 2 <= file.get_len() and read.size() < 5 * 16000:
		var sample := file.get_16()
		read.append(Vector2((sample - 65536 if sample >= 32768 else sample) / 32768.0, 0))
	return read


class Face:
	extends Node
	var shown := {}

	func _set(property: String, value) -> bool:
		if property.begins_with("blend_shapes/"):
			shown[property] = max(value, shown.get(property, 0.0))
		return property.begins_with("blend_shapes/")


func test_live_audio_moves_a_face(program: String) -> void:
	var face := Face.new()
	face.name = "Face"
	root.add_child(face)
	var mouth := LiveMouth.new()
	mouth.face = "/root/Face"
	mouth.program = program
	root.add_child(mouth)
	var heard := samples()
	var rate := int(AudioServer.get_mix_rate())
	var at := 0.0
	var begin := OS.get_ticks_msec()
	var step := 0.02 * rate
	while at * 16000 / rate < heard.size() - 1 and OS.get_ticks_msec() - begin < 60000:
		var block := PoolVector2Array()
		for i in range(int(step)):
			block.append(heard[int(min((at + i) * 16000 / rate, heard.size() - 1))])
		at += step
		mouth.push(block)
		yield(self, "idle_frame")
		OS.delay_msec(5)
	while not face.shown.get("blend_shapes/aa", 0.0) > 0.3 and OS.get_ticks_msec() - begin < 60000:
		yield(self, "idle_frame")
	check(mouth.error == "", mouth.error)
	check(face.shown.get("blend_shapes/aa", 0.0) > 0.3, str(face.shown))
	check(face.shown.get("blend_shapes/sil", 0.0) > 0.9, str(face.shown))
	mouth.free()

	mouth = LiveMouth.new()
	mouth.program = "/nowhere/tessarin"
	root.add_child(mouth)
	begin = OS.get_ticks_msec()
	while mouth.error == "" and OS.get_ticks_msec() - begin < 20000:
		yield(self, "idle_frame")
	check("has ended" in mouth.error or "does not start" in mouth.error, "a missing program: " + mouth.error)
	mouth.free()
	mouth = LiveMouth.new()
	mouth.bus = "Master"
	root.add_child(mouth)
	check("AudioEffectCapture" in mouth.error, mouth.error)
	mouth.free()
	face.free()


func _initialize() -> void:
	var program := read("res://program.txt").strip_edges()
	test_animation_follows_the_tools_table()
	test_failures_say_what_to_do()
	test_recordings_are_aligned_once(program)
	yield(test_live_audio_moves_a_face(program), "completed")
	print("%d checks, %d failed" % [checks, failures])
	quit(0 if failures == 0 and checks > 40 else 1)
