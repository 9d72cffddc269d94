"""A preview of the words as text strips above the sound."""

from __future__ import annotations

PROPERTY = "tessarin_owner"


def show_words(scene, owner: str, result: dict, fps: float, start_frame: float,
               above: int) -> int:
    """Replaces the word strips of `owner` by those of the result, in the first free channel over
    `above`. Returns how many there are."""
    editor = scene.sequence_editor_create()
    for strip in [each for each in editor.sequences if each.get(PROPERTY) == owner]:
        editor.sequences.remove(strip)
    spans = []
    for word in result.get("words", []):
        if word.get("said", True) and "start_ms" in word:
            first = round(start_frame + word["start_ms"] * fps / 1000)
            last = max(first + 1, round(start_frame + word["end_ms"] * fps / 1000))
            spans.append((word, first, last))
    channel = _free_channel(editor, above + 1, spans)
    for word, first, last in spans:
        strip = editor.sequences.new_effect(name=word["text"], type="TEXT", channel=channel,
                                            frame_start=first, frame_end=last)
        strip.text = word["text"]
        strip[PROPERTY] = owner
        strip.color_tag = "COLOR_01" if word.get("confidence", 1.0) < 0.5 else "COLOR_05"
    return len(spans)


def _free_channel(editor, channel: int, spans: list) -> int:
    if not spans:
        return channel
    first, last = spans[0][1], spans[-1][2]
    taken = {each.channel for each in editor.sequences
             if each.frame_final_start < last and each.frame_final_end > first}
    while channel in taken:
        channel += 1
    return channel
