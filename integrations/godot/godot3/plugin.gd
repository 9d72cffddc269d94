tool
extends EditorPlugin

const ImportPlugin := preload("import_plugin.gd")
const Recordings := preload("recordings.gd")
const LiveMouth := preload("live_mouth.gd")
const SETTING := "tessarin/program"
const MENU := "Mouths of all recordings with texts (Tessarin)"

var importer: EditorImportPlugin


func _enter_tree() -> void:
	if not ProjectSettings.has_setting(SETTING):
		ProjectSettings.set_setting(SETTING, "tessarin")
	ProjectSettings.set_initial_value(SETTING, "tessarin")
	importer = ImportPlugin.new()
	add_import_plugin(importer)
	add_custom_type("TessarinLiveMouth", "Node", LiveMouth, null)
	add_tool_menu_item(MENU, self, "_make_results")


func _exit_tree() -> void:
	remove_tool_menu_item(MENU)
	remove_custom_type("TessarinLiveMouth")
	remove_import_plugin(importer)
	importer = null


func _make_results(_unused) -> void:
	var recordings := Recordings.new()
	recordings.tool_path = ProjectSettings.get_setting(SETTING)
	var made := recordings.make_results("res://")
	for message in recordings.messages:
		push_error(message)
	print("Tessarin: %d results made" % made)
	get_editor_interface().get_resource_filesystem().scan()
