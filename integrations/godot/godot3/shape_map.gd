extends Reference
# A map from phonemes to the shapes of a face, in the form of the files in shapes/.

var shapes := []
var shares := {} # of each phoneme, by shape


# Returns "" or what is wrong.
func open(path: String) -> String:
	var file := File.new()
	if file.open(path, File.READ) != OK:
		return "%s does not open" % path
	var number := 0
	while not file.eof_reached():
		number += 1
		var words := Array(file.get_line().split("#")[0].replace("\t", " ").split(" ", false))
		var wrong := _read_line(words)
		if wrong != "":
			return "%s, line %d: %s" % [path, number, wrong]
	return "" if not shapes.empty() else "%s has no line that begins with shapes" % path


func _read_line(words: Array) -> String:
	if words.empty():
		return ""
	var head: String = words.pop_front()
	if head == "shapes":
		shapes += words
	elif not head in ["set", "rest", "closed"]:
		var shape := ""
		shares[head] = {}
		for word in words:
			if word in shapes:
				shape = word
				shares[head][shape] = 1.0
			elif shape != "" and word.is_valid_float():
				shares[head][shape] = float(word)
			else:
				return "%s is not one of the shapes" % word
	return ""


# The weight of each shape that a mixture of phonemes shows, 0 to 1.
func mix(weights: Dictionary) -> Dictionary:
	var shown := {}
	for phoneme in weights:
		var of_phoneme: Dictionary = shares.get(phoneme, {})
		for shape in of_phoneme:
			shown[shape] = min(1.0, shown.get(shape, 0.0) + weights[phoneme] * of_phoneme[shape])
	return shown
