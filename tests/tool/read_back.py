#!/usr/bin/env python3
"""Lets programs that are not ours read what the tool writes: Praat the TextGrid, ffmpeg the
captions, a schema validator the JSON. What is not installed is reported and skipped.

usage: read_back.py TOOL SOURCE_FOLDER
"""

import csv
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

SKIPPED = 77

PRAAT_SCRIPT = """
form Read
    sentence file
endform
Read from file: file$
tiers = Get number of tiers
for tier to tiers
    name$ = Get tier name: tier
    intervals = Get number of intervals: tier
    for i to intervals
        start = Get start time of interval: tier, i
        label$ = Get label of interval: tier, i
        if label$ <> ""
            appendInfoLine: name$, tab$, round(start * 1000), tab$, label$
        endif
    endfor
endfor
"""


def run(*command: str) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          stdin=subprocess.DEVNULL).stdout


def check_grid(folder: pathlib.Path, result: dict) -> None:
    script = folder / "read.praat"
    script.write_text(PRAAT_SCRIPT, encoding="utf-8")
    rows = [line.split("\t") for line in
            run("praat", "--run", str(script), str(folder / "a.TextGrid")).splitlines()]
    words = [(int(row[1]), row[2]) for row in rows if row[0] == "words"]
    phones = [(int(row[1]), row[2]) for row in rows if row[0] == "phones"]
    assert words == [(word["start_ms"], word["text"]) for word in result["words"]]
    assert phones == [(phone["start_ms"], phone["label"]) for phone in result["phonemes"]
                      if phone["label"] != "x"]


def check_captions(folder: pathlib.Path, result: dict) -> None:
    found = [word["text"] for word in result["words"]]
    for name in ("a.vtt", "a.srt"):
        text = run("ffmpeg", "-v", "error", "-xerror", "-i", str(folder / name), "-f", "srt", "-")
        spoken = " ".join(line for line in text.splitlines()
                          if line and "-->" not in line and not line.isdigit())
        plain = [word.strip(".,!?;:\"").lower() for word in spoken.split()]
        assert plain == [word.lower() for word in found], (name, plain, found)


def check_schema(folder: pathlib.Path, result: dict, source: pathlib.Path) -> None:
    import jsonschema
    schema = json.loads((source / "docs/result.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    jsonschema.Draft202012Validator(schema).validate(result)
    broken = json.loads(json.dumps(result))
    broken["frames"][0]["weights"]["q"] = 2
    assert not jsonschema.Draft202012Validator(schema).is_valid(broken)


def check_switches(folder: pathlib.Path) -> None:
    cues = xml.etree.ElementTree.parse(folder / "a.xml").getroot().find("mouthCues")
    seen = [(cue.get("start"), cue.text) for cue in cues]
    with open(folder / "a.switches.tsv", encoding="utf-8", newline="") as file:
        rows = [tuple(row) for row in csv.reader(file, delimiter="\t")]
    assert len(seen) > 20 and rows[:-1] == seen


def check_annotations(folder: pathlib.Path, result: dict) -> None:
    document = xml.etree.ElementTree.parse(folder / "a.eaf").getroot()
    times = {slot.get("TIME_SLOT_ID"): int(slot.get("TIME_VALUE"))
             for slot in document.find("TIME_ORDER")}
    tiers = {tier.get("TIER_ID"): [
        (times[one.get("TIME_SLOT_REF1")], one.findtext("ANNOTATION_VALUE"))
        for one in tier.iter("ALIGNABLE_ANNOTATION")] for tier in document.iter("TIER")}
    assert tiers["words"] == [(word["start_ms"], word["text"]) for word in result["words"]]
    assert len(tiers["phones"]) == sum(each["label"] != "x" for each in result["phonemes"])
    media = document.find("HEADER/MEDIA_DESCRIPTOR").get("RELATIVE_MEDIA_URL")
    assert (folder / media).resolve().is_file(), media

    page = xml.etree.ElementTree.parse(folder / "a.xhtml").getroot()
    spans = {each.get("id"): each.text for each in page.iter("{http://www.w3.org/1999/xhtml}span")}
    smil = xml.etree.ElementTree.parse(folder / "a.smil").getroot()
    space = "{http://www.w3.org/ns/SMIL}"
    spoken = []
    for pair in smil.iter(space + "par"):
        file, place = pair.find(space + "text").get("src").split("#")
        audio = pair.find(space + "audio")
        assert file == "a.xhtml" and (folder / audio.get("src")).resolve().is_file()
        spoken.append((round(float(audio.get("clipBegin")[:-1]) * 1000), spans[place]))
    assert spoken == tiers["words"]


def main() -> int:
    tool, source = sys.argv[1], pathlib.Path(sys.argv[2])
    readers = {"praat": shutil.which("praat"), "ffmpeg": shutil.which("ffmpeg")}
    try:
        import jsonschema
        readers["jsonschema"] = jsonschema.__file__
    except ImportError:
        readers["jsonschema"] = None
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        outputs = ["a.json", "a.TextGrid", "a.vtt", "a.srt", "a.xml", "a.switches.tsv",
                   "a.eaf", "a.smil", "a.xhtml"]
        demo = source / "data/demo/echo-test"
        run(tool, "align", f"{demo}.wav", "--text-file", f"{demo}.txt", "--quantize", "500-900",
            *(part for output in outputs for part in ("-o", str(folder / output))))
        result = json.loads((folder / "a.json").read_text(encoding="utf-8"))
        check_switches(folder)
        check_annotations(folder, result)
        if readers["praat"]:
            check_grid(folder, result)
        if readers["ffmpeg"]:
            check_captions(folder, result)
        if readers["jsonschema"]:
            check_schema(folder, result, source)
    missing = [reader for reader, found in readers.items() if not found]
    print("not installed, so not asked: " + ", ".join(missing) if missing else "all read it")
    return SKIPPED if len(missing) == len(readers) else 0


if __name__ == "__main__":
    sys.exit(main())
