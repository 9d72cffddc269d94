tool
extends EditorImportPlugin
# Imports a result of `tessarin align` as an Animation.

const AnimationMaker := preload("animation_maker.gd")

enum Presets { DEFAULT }


func get_importer_name() -> String:
	return "tessarin.result"


func get_visible_name() -> String:
	return "Mouth animation (Tessarin)"


func get_recognized_extensions() -> Array:
	return ["json", "tessarin"]


func get_save_extension() -> String:
	return "anim"


func get_resource_type() -> String:
	return "Animation"


func get_preset_count() -> int:
	return 1


func get_preset_name(_preset: int) -> String:
	return "Default"


func get_import_options(_preset: int) -> Array:
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


func get_option_visibility(_option: String, _options: Dictionary) -> bool:
	return true


func import(source: String, save_path: String, options: Dictionary, _variants: Array, _files: Array) -> int:
	var maker := AnimationMaker.new()
	var animation := maker.make(source, options)
	if animation == null:
		push_error(maker.error)
		return ERR_PARSE_ERROR
	return ResourceSaver.save("%s.%s" % [save_path, get_save_extension()], animation)
