@tool
extends EditorImportPlugin
# Imports a result of `tessarin align` as an Animation.

const AnimationMaker := preload("animation_maker.gd")


func _get_importer_name() -> String:
	return "tessarin.result"


func _get_visible_name() -> String:
	return "Mouth animation (Tessarin)"


func _get_recognized_extensions() -> PackedStringArray:
	return PackedStringArray(["json", "tessarin"])


func _get_save_extension() -> String:
	return "anim"


func _get_resource_type() -> String:
	return "Animation"


func _get_priority() -> float:
	return 1.0


func _get_import_order() -> int:
	return 0


func _get_preset_count() -> int:
	return 1


func _get_preset_name(_preset: int) -> String:
	return "Default"


func _get_import_options(_path: String, _preset: int) -> Array[Dictionary]:
	return [
		{"name": "set", "default_value": "visemes", "property_hint": PROPERTY_HINT_ENUM,
				"hint_string": "visemes,arkit,vrm,switches,preston-blair"},
		{"name": "map", "default_value": "", "property_hint": PROPERTY_HINT_FILE, "hint_string": "*.shapes"},
		{"name": "node", "default_value": "."},
		{"name": "prefix", "default_value": ""},
		{"name": "names", "default_value": ""},
		{"name": "strength", "default_value": 1.0},
		{"name": "tolerance", "default_value": 0.01},
	]


func _get_option_visibility(_path: String, _option: StringName, _options: Dictionary) -> bool:
	return true


func _import(source: String, save_path: String, options: Dictionary, _variants: Array[String],
		_files: Array[String]) -> Error:
	var maker := AnimationMaker.new()
	var animation := maker.make(source, options)
	if animation == null:
		push_error(maker.error)
		return ERR_PARSE_ERROR
	return ResourceSaver.save(animation, "%s.%s" % [save_path, _get_save_extension()])
