#!/usr/bin/env python3
"""Holds the JSON of orvantactl to its schema: that of each command, run here beside a simulator, and the lines that
the process tests have left in a file. Each document must fit one shape, and none with a key that is unknown; each
shape must be seen.

usage: check_schema.py SCHEMA ORVANTACTL SIMULATOR LINES-FILE
"""
import copy
import json
import os
import subprocess
import sys
import tempfile

import jsonschema

schema_path, program, simulator, lines_path = sys.argv[1:]
with open(schema_path, encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
shapes = {
    reference["$ref"].rsplit("/", 1)[1]: jsonschema.Draft202012Validator({**reference, "$defs": schema["$defs"]})
    for reference in schema["oneOf"]
}
seen = dict.fromkeys(shapes, 0)
mistakes = []


def with_a_key_too_many(document):
    """The document, once for each object in it, with an unknown key there; figures and fields may have any."""
    paths = [()]
    while paths:
        path = paths.pop()
        changed = copy.deepcopy(document)
        at = changed
        for step in path:
            at = at[step]
        if isinstance(at, dict):
            paths += [path + (key,) for key in at if key not in ("figures", "fields")]
            at["surplus"] = 1
            yield changed
        elif isinstance(at, list):
            paths += [path + (index,) for index in range(len(at))]


def check(line, source):
    try:
        document = json.loads(line)
    except ValueError as wrong:
        mistakes.append(f"{source}: no JSON ({wrong}): {line}")
        return
    fitting = [name for name, shape in shapes.items() if shape.is_valid(document)]
    if len(fitting) != 1:
        mistakes.append(f"{source}: fits {fitting or 'nothing'}: {line}")
        return
    seen[fitting[0]] += 1
    if seen[fitting[0]] <= 20:
        for changed in with_a_key_too_many(document):
            if validator.is_valid(changed):
                mistakes.append(f"{source}: fits with an unknown key too: {json.dumps(changed)}")


def run(status, *arguments):
    ended = subprocess.run([program, "--json", *arguments], capture_output=True, text=True, timeout=60, check=False)
    if ended.returncode != status:
        mistakes.append(f"{arguments}: status {ended.returncode}, not {status}: {ended.stderr}")
    for line in (ended.stdout + ended.stderr).splitlines():
        check(line, " ".join(arguments))


run(3, "list", "--timeout", "100ms")
run(5, "wait", "--for", "100ms")
with subprocess.Popen([simulator], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as service:
    try:
        assert service.stdout.readline() == "listening on port 54320\n"
        with tempfile.TemporaryDirectory() as folder:
            backup = os.path.join(folder, "backup.json")
            run(0, "list")
            run(0, "info")
            run(0, "get")
            run(0, "get", "orientation", "motor-current", "power-supply", "scaling-factor", "handedness")
            run(0, "backup", backup)
            run(0, "set", "handedness=left", "scaling-factor=0.5", "torque-scaling=off", "gravity-compensation=off")
            run(0, "diff", backup)
            run(0, "restore", backup, "--save")
            run(0, "set", "handedness=left", "--dry-run")
            run(0, "save")
            run(0, "get", "--capture", os.path.join(folder, "get.pcap"))
            run(0, "replay", os.path.join(folder, "get.pcap"))
            run(0, "watch", "--for", "300ms")
            run(0, "wait")
            run(0, "wait", "service")
            run(0, "doctor")
            run(0, "version")
        run(1, "restore", os.path.join(folder, "none.json"))
        run(2, "lst")
        run(4, "info", "--device", "none")
        run(5, "wait", "removal", "--for", "100ms")
    finally:
        service.terminate()
if os.path.exists(lines_path):
    with open(lines_path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            check(line, f"{lines_path}:{number}")
mistakes += [f"no document is '{name}'" for name, count in seen.items() if count == 0]
print(", ".join(f"{count} {name}" for name, count in seen.items()))
for mistake in mistakes[:40]:
    print(mistake)
sys.exit(1 if mistakes else 0)
