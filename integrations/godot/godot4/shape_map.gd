extends RefCounted
# A map from phonemes to the shapes of a face, in the form of the files in shapes/.

var shapes: Array[String] = []
var shares := {} # of each phoneme, by shape


# Returns "" or what is wrong.
func open(path: String) -> String:
	var file := FileAccess.open(path, FileAccess.READ)
	if file == null:
		return "%s does not open" % path
	var number := 0
	while not file.eof_reached():
		number += 1
		var line := file.get_line().get_slice("#", 0).replace("\t", " ")
		var wrong := _read_line(Array(line.split(" ", false)))
		if wrong != "":
			return "%s, line %d: %s" % [path, number, wrong]
	return "" if not shapes.is_empty() else "%s has no line that begins with shapes" % path


func _read_line(words: Array) -> String:
	if words.is_empty():
		return ""
	var head: String = words.pop_front()
	if head == "shapes":
		for word: String in words:
			shapes.append(word)
	elif not head in ["set", "rest", "closed"]:
		var shape := ""
		shares[head] = {}
		for word: String in words:
			if word in shapes:
				shape = word
				shares[head][shape] = 1.0
			elif shape != "" and word.is_valid_float():
				shares[head][shape] = word.to_float()
			else:
				return "%s is not one of the shapes" % word
	return ""


# The weight of each shape that a mixture of phonemes shows, 0 to 1.
func mix(weights: Dictionary) -> Dictionary:
	var shown := {}
	for phoneme: String in weights:
		var of_phoneme: Dictionary = shares.get(phoneme, {})
		for shape: String in of_phoneme:
			shown[shape] = minf(1.0, shown.get(shape, 0.0) + weights[phoneme] * of_phoneme[shape])
	return shown
