extends Node
# Moves the blend shapes of a face by audio that is still coming in, about 100 ms late. The program
# `tessarin live` does the work: this node sends it samples over a local connection and reads the
# lines that it answers. It is started through bash, which connects it: for Linux and macOS.
#
# Samples come from the AudioEffectCapture of a bus (Godot 3.3 and later), or from push().

const ShapeMap := preload("shape_map.gd")
const AnimationMaker := preload("animation_maker.gd")
const CONNECT := "exec 3<>\"/dev/tcp/127.0.0.1/$1\" && exec \"$0\" live --raw \"$2,16,1\" - <&3 >&3"
const MOST_WAITING := 1 << 20 # bytes; more means that the program does not keep up
const START_SECONDS := 10.0

export(NodePath) var face # a MeshInstance with blend shapes
export(String) var program := "tessarin"
export(String, "visemes", "arkit", "vrm", "switches", "preston-blair") var shape_set := "visemes"
export(String) var prefix := ""
export(String) var names := "" # "aa=Mouth_A, PP=Mouth_M"
export(float, 0, 2) var strength := 1.0
export(String) var bus := "" # whose first AudioEffectCapture is heard; empty: only what is pushed

var weights := {} # of each shape, the newest
var error := "" # why nothing moves

var _map := ShapeMap.new()
var _names := {}
var _capture = null
var _waited := 0.0
var _server := TCP_Server.new()
var _connection: StreamPeerTCP = null
var _waiting := PoolByteArray() # samples that are not yet sent
var _cut := PoolByteArray() # the beginning of a line that has not come whole


func _ready() -> void:
	var here: String = (get_script() as Script).resource_path.get_base_dir()
	error = _map.open(here + "/shapes/%s.shapes" % shape_set)
	_names = AnimationMaker.read_names(names)
	if error == "":
		_find_capture()
	if error == "":
		_start()
	if error != "":
		_fail(error)


func _find_capture() -> void:
	if bus == "":
		return
	var number := AudioServer.get_bus_index(bus)
	for i in range(AudioServer.get_bus_effect_count(number) if number >= 0 else 0):
		var effect := AudioServer.get_bus_effect(number, i)
		if effect.get_class() == "AudioEffectCapture":
			_capture = effect
			return
	error = "the bus %s has no AudioEffectCapture: add one, or leave the bus empty and call push()" % bus


func _start() -> void:
	if OS.get_name() == "Windows":
		error = "live audio is not possible here on Windows: make an animation of the recording"
		return
	randomize()
	var port := 0
	for _attempt in range(20):
		port = 49152 + randi() % 16000
		if _server.listen(port, "127.0.0.1") == OK:
			break
	# The program ends when the connection does.
	var arguments := ["-c", CONNECT, program, str(port), str(int(AudioServer.get_mix_rate()))]
	if not _server.is_listening() or OS.execute("bash", arguments, false) <= 0:
		error = "%s does not start: it needs bash and a free port" % program


# Takes samples, of which the left channel is heard, at the mix rate of the AudioServer.
func push(samples: PoolVector2Array) -> void:
	if error != "":
		return
	var bytes := StreamPeerBuffer.new()
	bytes.resize(2 * samples.size())
	for sample in samples:
		bytes.put_16(int(clamp(sample.x, -1.0, 1.0) * 32767))
	_waiting += bytes.data_array
	if _waiting.size() > MOST_WAITING:
		_waiting = _waiting.subarray(_waiting.size() - MOST_WAITING / 2, -1)


func _process(delta: float) -> void:
	if error != "":
		return
	if _capture != null and _capture.get_frames_available() > 0:
		push(_capture.get_buffer(_capture.get_frames_available()))
	if _connection == null:
		_accept(delta)
		return
	_send()
	if _receive():
		_show()


func _accept(delta: float) -> void:
	_waited += delta
	if _server.is_connection_available():
		_connection = _server.take_connection()
		_server.stop()
	elif _waited > START_SECONDS:
		_fail("%s does not start: install tessarin, or set the program of this node" % program)


func _send() -> void:
	if _waiting.empty():
		return
	var sent: Array = _connection.put_partial_data(_waiting)
	if sent[0] != OK:
		_fail("%s has ended: start it in a terminal to see why" % program)
	elif sent[1] >= _waiting.size():
		_waiting = PoolByteArray()
	elif sent[1] > 0:
		_waiting = _waiting.subarray(sent[1], -1)


# Keeps the newest frame of the lines that have come; true when there is one.
func _receive() -> bool:
	var size := _connection.get_available_bytes() # notices the end of the connection, too
	if _connection.get_status() != StreamPeerTCP.STATUS_CONNECTED:
		_fail("%s has ended: start it in a terminal to see why" % program)
		return false
	if size <= 0:
		return false
	_cut += _connection.get_data(size)[1]
	var text := _cut.get_string_from_ascii()
	var end := text.find_last("\n")
	if end < 0:
		return false
	_cut = text.substr(end + 1).to_ascii()
	var is_new := false
	for line in text.substr(0, end).split("\n", false):
		var stretch = parse_json(line)
		if typeof(stretch) == TYPE_DICTIONARY and not stretch.get("frames", []).empty():
			weights = _map.mix(stretch.frames[-1].weights)
			is_new = true
	return is_new


func _fail(why: String) -> void:
	error = why
	push_error("%s: %s" % [name, why])


func _show() -> void:
	var mesh := get_node_or_null(face)
	if mesh == null:
		return
	for shape in _map.shapes:
		mesh.set("blend_shapes/" + _names.get(shape, prefix + shape), strength * weights.get(shape, 0.0))


func _exit_tree() -> void:
	_server.stop()
	if _connection != null:
		_connection.disconnect_from_host()
