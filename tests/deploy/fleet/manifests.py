#!/usr/bin/env python3
"""The manifests of deploy/fleet/ say what they should, and agree with each other and with the keeper.

usage: manifests.py DEPLOY_FLEET KEEPER [CRDS.yaml...]
KEEPER is the keeper's executable; with an empty one its options are not looked at. Definitions of
resources, as Agones publishes them, are held against the manifests too. Each rule is then tried on
manifests with a slip of each kind, which have to be refused. Needs kubectl, but no cluster.
"""
import copy
import glob
import json
import os
import re
import subprocess
import sys
import tempfile

import jsonschema
import yaml

FOLDER = os.path.dirname(os.path.abspath(__file__))
SCHEMA = yaml.safe_load(open(os.path.join(FOLDER, "schema.yaml")))

# What the keeper needs after it has waited: five seconds for Agones to take the end, and some more.
GOODBYE_SECONDS = 10
# Of a pod that does not say.
USUAL_GRACE_SECONDS = 30
CAPACITY = 4


def schema_of(kind):
    return {"definitions": SCHEMA["definitions"], "type": "object", "additionalProperties": False,
            "required": ["apiVersion", "kind", "metadata"], "allOf": [{"required": SCHEMA["kinds"][kind].get("required", [])}],
            "properties": SCHEMA["kinds"][kind]["properties"]}


def shape_problems(documents):
    for document in documents:
        kind = document.get("kind")
        if kind not in SCHEMA["kinds"]:
            yield f"{kind}: no such kind here"
            continue
        for error in jsonschema.Draft7Validator(schema_of(kind)).iter_errors(document):
            yield f"{kind} {'.'.join(map(str, error.absolute_path))}: {error.message[:200]}"


def strictly(schema):
    """A definition's own schema, in which fields that it does not know are refused, as Kubernetes does."""
    if isinstance(schema, list):
        return [strictly(part) for part in schema]
    if not isinstance(schema, dict):
        return schema
    strict = {key: strictly(value) for key, value in schema.items()}
    if schema.get("x-kubernetes-int-or-string"):
        strict.pop("type", None)
        strict["type"] = ["integer", "string"]
    if (isinstance(schema.get("properties"), dict) and schema.get("type") == "object" and
            "additionalProperties" not in schema and
            not schema.get("x-kubernetes-preserve-unknown-fields")):
        strict["additionalProperties"] = False
    return strict


def definitions_in(paths):
    """Schemas by (apiVersion, kind) out of CustomResourceDefinitions."""
    found = {}
    for path in paths:
        for document in yaml.safe_load_all(open(path)):
            if not document or document.get("kind") != "CustomResourceDefinition":
                continue
            spec = document["spec"]
            for version in spec["versions"]:
                schema = strictly(version["schema"]["openAPIV3Schema"])
                # Of every resource, whatever its definition says.
                if "properties" in schema:
                    schema["properties"].update({"apiVersion": {}, "kind": {}, "metadata": {}})
                found[f"{spec['group']}/{version['name']}", spec["names"]["kind"]] = schema
    return found


def definition_problems(documents, definitions):
    for document in documents:
        schema = definitions.get((document["apiVersion"], document["kind"]))
        if schema:
            for error in jsonschema.Draft7Validator(schema).iter_errors(document):
                yield (f"{document['kind']} {'.'.join(map(str, error.absolute_path))}: by its definition: "
                       f"{error.message[:200]}")


def options_of(container):
    """{"--wait-for-players": "3600"} of "--wait-for-players=3600"."""
    return dict(argument.split("=", 1) for argument in container["args"] if "=" in argument)


def restriction_problems(where, pod, container, exceptions):
    """What the pod security standard "restricted" asks of a container, without the exceptions."""
    def problem(name, holds):
        if not holds and name not in exceptions:
            return [f"{where} {container['name']}: not restricted: {name}"]
        return []
    security = {**pod.get("securityContext", {}), **container.get("securityContext", {})}
    capabilities = security.get("capabilities", {})
    yield from problem("runAsNonRoot", security.get("runAsNonRoot") is True)
    yield from problem("runAsUser", security.get("runAsUser") != 0)
    yield from problem("allowPrivilegeEscalation", security.get("allowPrivilegeEscalation") is False)
    yield from problem("drop", capabilities.get("drop") == ["ALL"])
    yield from problem("add", set(capabilities.get("add", [])) <= {"NET_BIND_SERVICE"})
    yield from problem("seccompProfile", security.get("seccompProfile", {}).get("type") == "RuntimeDefault")
    # Of ours.
    yield from problem("readOnlyRootFilesystem", security.get("readOnlyRootFilesystem") is True)


def selects(selector, labels):
    return selector["matchLabels"].items() <= labels.items()


def fleet_problems(fleet, documents):
    name = fleet["metadata"]["name"]
    server = fleet["spec"]["template"]["spec"]
    pod = server["template"]["spec"]
    labels = server["template"]["metadata"]["labels"]
    rooms = [container for container in pod["containers"] if container["name"] == server["container"]]
    if len(rooms) != 1:
        yield f"{name}: no container {server['container']}"
        return
    room = rooms[0]
    options = options_of(room)
    port = server["ports"][0]

    if "replicas" in fleet["spec"]:
        yield f"{name}: replicas are the autoscaler's"
    if fleet["spec"]["strategy"]["type"] != "RollingUpdate":
        yield f"{name}: an update ends rooms with players"
    if room["args"][0] != str(port["containerPort"]) or port["protocol"] != "UDP":
        yield f"{name}: the room listens elsewhere than players come"
    if port["portPolicy"] != "Dynamic" or port["container"] != server["container"]:
        yield f"{name}: the port is not the room's own on its node"
    if server["counters"].get("players", {}).get("capacity") != CAPACITY:
        yield f"{name}: the counter of players is not the keeper's"

    wait = int(options["--wait-for-players"])
    grace = pod.get("terminationGracePeriodSeconds", USUAL_GRACE_SECONDS)
    if grace < wait + GOODBYE_SECONDS:
        yield f"{name}: killed after {grace} s, while players may stay {wait} s"
    # The node's upgrade lets a pod go on for an hour at most, which is what Kubernetes' providers grant.
    if server["eviction"]["safe"] == "OnUpgrade" and grace > 3600:
        yield f"{name}: an upgrade does not wait for {grace} s"
    if options["--agones"] != "on":
        yield f"{name}: the keeper may play without Agones"

    health = server["health"]
    if health.get("disabled") or health["periodSeconds"] < 2 * 2:
        yield f"{name}: the keeper's health, every 2 s, comes too rarely"
    if not 10 <= health["periodSeconds"] * health["failureThreshold"] <= 60:
        yield f"{name}: a room that hangs is replaced too early or too late"

    metrics = [p["containerPort"] for p in room["ports"] if p["name"] == "metrics"]
    if options["--metrics"] != f"0.0.0.0:{metrics[0]}":
        yield f"{name}: metrics are not where the port is"
    for monitor in (d for d in documents if d["kind"] == "PodMonitor"):
        if not selects(monitor["spec"]["selector"], labels):
            yield f"{name}: not monitored"
        if monitor["spec"]["podMetricsEndpoints"][0]["port"] != "metrics":
            yield f"{name}: monitored at another port"

    policies = [d for d in documents if d["kind"] == "NetworkPolicy" and
                selects(d["spec"]["podSelector"], labels)]
    if not policies:
        yield f"{name}: no network policy"
    for policy in policies:
        rules = policy["spec"]["ingress"]
        if not any("from" not in rule and {"protocol": "UDP", "port": port["containerPort"]} in rule["ports"]
                   for rule in rules):
            yield f"{name}: players are not let in"
        open_to_all = [p for rule in rules if "from" not in rule for p in rule.get("ports", [{}])]
        if open_to_all != [{"protocol": "UDP", "port": port["containerPort"]}]:
            yield f"{name}: more than the room is open to all"
        if not any("from" in rule and {"protocol": "TCP", "port": metrics[0]} in rule["ports"] for rule in rules):
            yield f"{name}: Prometheus is not let in"
        if sorted(policy["spec"]["policyTypes"]) != ["Egress", "Ingress"]:
            yield f"{name}: the policy leaves a direction open"

    scalers = [d for d in documents if d["kind"] == "FleetAutoscaler" and d["spec"]["fleetName"] == name]
    if len(scalers) != 1:
        yield f"{name}: {len(scalers)} autoscalers"
    for budget in (d for d in documents if d["kind"] == "PodDisruptionBudget"):
        if selects(budget["spec"]["selector"], labels):
            least = scalers[0]["spec"]["policy"]["buffer"]["minReplicas"] if scalers else 0
            if budget["spec"]["minAvailable"] >= least:
                yield f"{name}: its least size of {least} rooms can never be drained"

    yield from restriction_problems(name, pod, room, [])
    for container in pod["initContainers"]:
        exceptions = []
        if container["name"] == "firewall":
            exceptions = ["runAsNonRoot", "runAsUser", "add"]
            if container["securityContext"]["capabilities"]["add"] != ["NET_ADMIN"]:
                yield f"{name}: the firewall has other capabilities than it needs"
        yield from restriction_problems(name, pod, container, exceptions)
    if [c["name"] for c in pod["initContainers"]] != ["firewall"] or len(pod["containers"]) != 1:
        yield f"{name}: other containers than the firewall and the room"

    maps = {d["metadata"]["name"]: d for d in documents if d["kind"] == "ConfigMap"}
    for volume in pod.get("volumes", []):
        arena = maps.get(volume["configMap"]["name"])
        if not arena or list(arena["data"]) != ["mapdata"]:
            yield f"{name}: no arena in {volume['configMap']['name']}"
        mounts = [m for m in room.get("volumeMounts", []) if m["name"] == volume["name"]]
        if [m["mountPath"] for m in mounts] != ["/Resources"]:
            yield f"{name}: the arena is not where the server looks"


def unit(text):
    return float(text[:-1]) / 1000 if text.endswith("m") else float(text)


def rule_problems(documents):
    """How the documents of an overlay fit together."""
    fleets = [d for d in documents if d["kind"] == "Fleet"]
    if not fleets:
        yield "no fleet"
    for fleet in fleets:
        yield from fleet_problems(fleet, documents)
        for container in fleet["spec"]["template"]["spec"]["template"]["spec"]["containers"]:
            # What was measured: 0.65 % and 0.2 % of a core.
            if unit(container["resources"]["requests"]["cpu"]) < 0.0085:
                yield f"{fleet['metadata']['name']}: more rooms on a node than it can carry"
    names = {fleet["metadata"]["name"] for fleet in fleets}
    for scaler in (d for d in documents if d["kind"] == "FleetAutoscaler"):
        if scaler["spec"]["fleetName"] not in names:
            yield f"{scaler['metadata']['name']}: scales {scaler['spec']['fleetName']}, which is no fleet"
    for budget in (d for d in documents if d["kind"] == "PodDisruptionBudget"):
        chosen = [f for f in fleets if selects(budget["spec"]["selector"],
                                               f["spec"]["template"]["spec"]["template"]["metadata"]["labels"])]
        if len(chosen) != 1:
            yield f"{budget['metadata']['name']}: a budget of {len(chosen)} fleets"
    namespaces = {d["metadata"]["name"] for d in documents if d["kind"] == "Namespace"}
    for document in documents:
        if document["kind"] != "Namespace" and document["metadata"].get("namespace") not in namespaces:
            yield f"{document['kind']} {document['metadata']['name']}: in no namespace of its own"


def allocation_problems(allocation):
    selectors = allocation["spec"]["selectors"]
    if [s.get("gameServerState") for s in selectors] != ["Allocated", "Ready"]:
        yield "allocation: friends do not come to others first, then to an empty room"
    places = selectors[0].get("counters", {}).get("players", {})
    if places.get("minAvailable", 0) < 1:
        yield "allocation: nobody looks for free places"
    # An allocated room may wait for others who are on their way, or is about to end.
    if places.get("minCount", 0) < 1:
        yield "allocation: friends come to a room where nobody plays"
    if len({json.dumps(s["matchLabels"]) for s in selectors}) != 1:
        yield "allocation: from two fleets"
    if [(p["key"], p.get("order")) for p in allocation["spec"]["priorities"]] != [("players", "Ascending")]:
        yield "allocation: the fullest room is not the first"


def keeper_problems(documents, keeper):
    """Options that the keeper does not have, or not so."""
    if not keeper:
        return
    for fleet in (d for d in documents if d["kind"] == "Fleet"):
        room = fleet["spec"]["template"]["spec"]["template"]["spec"]["containers"][0]
        # It parses all, and then says that there is no such server.
        result = subprocess.run([keeper, *room["args"], "--server=/nowhere"], capture_output=True, text=True,
                                timeout=20, env={**os.environ, "AGONES_SDK_HTTP_PORT": "1"})
        if "/nowhere" not in result.stderr:
            yield f"{fleet['metadata']['name']}: the keeper says: {result.stderr.strip()}"


def problems_of(documents, allocation, keeper, definitions):
    everything = [*documents, allocation]
    shape = list(shape_problems(everything))
    # What does not have the shape cannot be looked at.
    if shape:
        return shape
    return [*definition_problems(everything, definitions), *rule_problems(documents),
            *allocation_problems(allocation), *keeper_problems(documents, keeper)]


def place(document, path):
    """The container of the last step of "spec.template.0.name", and that step."""
    steps = [int(step) if step.isdigit() else step for step in re.split(r"\.(?![^\[]*\])", path)]
    for step in steps[:-1]:
        document = document[step]
    return document, steps[-1]


REMOVED = object()
GAME_SERVER = "spec.template.spec."
POD = GAME_SERVER + "template.spec."
# Slips that have to be noticed: kind, path, and what stands there then.
SLIPS = [
    ("Fleet", "apiVersion", "agones.dev/v2"),
    ("Fleet", "spec.replicas", 20),
    ("Fleet", "spec.schedulling", "Packed"),
    ("Fleet", "spec.scheduling", "packed"),
    ("Fleet", "spec.strategy.type", "Recreate"),
    ("Fleet", "spec.strategy.rollingUpdate.maxSurge", "25"),
    ("Fleet", GAME_SERVER + "ports.0.portPolicy", "Static"),
    ("Fleet", GAME_SERVER + "ports.0.portpolicy", "Dynamic"),
    ("Fleet", GAME_SERVER + "ports.0.containerPort", 5001),
    ("Fleet", GAME_SERVER + "ports.0.containerPort", "5000"),
    ("Fleet", GAME_SERVER + "ports.0.protocol", "TCP"),
    ("Fleet", GAME_SERVER + "ports.0.container", "firewall"),
    ("Fleet", GAME_SERVER + "container", "server"),
    ("Fleet", GAME_SERVER + "health.disabled", True),
    ("Fleet", GAME_SERVER + "health.periodSeconds", 1),
    ("Fleet", GAME_SERVER + "health.failureTreshold", 3),
    ("Fleet", GAME_SERVER + "counters.players.capacity", 5),
    ("Fleet", GAME_SERVER + "counters", {"player": {"capacity": 4}}),
    ("Fleet", GAME_SERVER + "eviction.safe", "Sometimes"),
    ("Fleet", POD + "terminationGracePeriodSeconds", 30),
    ("Fleet", POD + "terminationGracePeriodSeconds", 3630),
    ("Fleet", POD + "terminationGracePeriodSeconds", REMOVED),
    ("Fleet", POD + "hostNetwork", True),
    ("Fleet", POD + "securityContext.runAsNonRoot", False),
    ("Fleet", POD + "securityContext.seccompProfile.type", "Unconfined"),
    ("Fleet", POD + "containers.0.securityContext.capabilities.drop", ["NET_RAW"]),
    ("Fleet", POD + "containers.0.securityContext.capabilities.add", ["NET_ADMIN"]),
    ("Fleet", POD + "containers.0.securityContext.allowPrivilegeEscalation", REMOVED),
    ("Fleet", POD + "containers.0.securityContext.readOnlyRootFilesystem", REMOVED),
    ("Fleet", POD + "containers.0.securityContext.runAsUser", 0),
    ("Fleet", POD + "containers.0.args.0", "5001"),
    ("Fleet", POD + "containers.0.args.1", "--agones=off"),
    ("Fleet", POD + "containers.0.args.2", "--metrics=127.0.0.1:5000"),
    ("Fleet", POD + "containers.0.args.4", "--wait-for-players=7200"),
    ("Fleet", POD + "containers.0.resources.requests.cpu", "1m"),
    ("Fleet", POD + "containers.0.resources.limits", REMOVED),
    ("Fleet", POD + "containers.0.ports.0.containerPort", 5001),
    ("Fleet", POD + "initContainers", []),
    ("Fleet", POD + "initContainers.0.securityContext.capabilities.add", ["NET_ADMIN", "SYS_ADMIN"]),
    ("Fleet", POD + "initContainers.0.securityContext.allowPrivilegeEscalation", True),
    ("Fleet", GAME_SERVER + "template.metadata.labels.[app.kubernetes.io/name]", "room"),
    ("FleetAutoscaler", "spec.fleetName", "dranch"),
    ("FleetAutoscaler", "spec.policy.type", "Counter"),
    ("FleetAutoscaler", "spec.policy.buffer.bufferSize", "20"),
    ("FleetAutoscaler", "spec.policy.buffer.buffersize", 20),
    ("FleetAutoscaler", "spec.policy.buffer.minReplicas", 1),
    ("FleetAutoscaler", "spec.sync.fixedInterval.seconds", "10s"),
    ("PodDisruptionBudget", "spec.minAvailable", "50%"),
    ("PodDisruptionBudget", "spec.minAvailable", 100),
    ("PodDisruptionBudget", "spec.selector.matchLabels", {"app.kubernetes.io/name": "drench"}),
    ("NetworkPolicy", "spec.ingress.0.ports.0.port", 5001),
    ("NetworkPolicy", "spec.ingress.0.ports.0.protocol", "TCP"),
    ("NetworkPolicy", "spec.ingress.1.from", REMOVED),
    ("NetworkPolicy", "spec.policyTypes", ["Ingress"]),
    ("NetworkPolicy", "spec.podSelector.matchLabels", {"app": "drench"}),
    ("PodMonitor", "spec.podMetricsEndpoints.0.port", "play"),
    ("PodMonitor", "spec.selector.matchLabels", {"app": "drench"}),
    ("PodMonitor", "spec.podMetricsEndpoints.0.intervall", "15s"),
    ("ConfigMap", "metadata.name", "arena"),
    ("ConfigMap", "data", {"mapdata.txt": ""}),
    ("Namespace", "metadata.name", "drench2"),
    ("GameServerAllocation", "spec.selectors.0.gameServerState", "Ready"),
    ("GameServerAllocation", "spec.selectors.0.counters", REMOVED),
    ("GameServerAllocation", "spec.selectors.0.counters.players", {"minAvailble": 2}),
    ("GameServerAllocation", "spec.selectors.0.counters.players.minAvailable", REMOVED),
    ("GameServerAllocation", "spec.selectors.0.counters.players.minCount", REMOVED),
    ("GameServerAllocation", "spec.selectors.0.counters.players.minCount", 0),
    ("GameServerAllocation", "spec.priorities.0.order", "Descending"),
    ("GameServerAllocation", "spec.required", {}),
]
# These need the keeper to be noticed.
KEEPER_SLIPS = [
    ("Fleet", POD + "containers.0.args.3", "--when-room-ends=again"),
    ("Fleet", POD + "containers.0.args.5", "--end-when-unused=120"),
]


def slipped(documents, allocation, kind, path, value):
    documents, allocation = copy.deepcopy(documents), copy.deepcopy(allocation)
    document = next(d for d in [*documents, allocation] if d["kind"] == kind)
    parent, step = place(document, path)
    if isinstance(step, str):
        step = step.strip("[]")
    if value is REMOVED:
        del parent[step]
    else:
        parent[step] = value
    return documents, allocation


# A definition as Agones' are built, to see that slips are noticed by those too.
SMALL_DEFINITION = """
kind: CustomResourceDefinition
spec:
  group: agones.dev
  names: { kind: Fleet }
  versions:
    - name: v1
      schema:
        openAPIV3Schema:
          type: object
          properties:
            spec:
              type: object
              properties:
                scheduling: { type: string, enum: [Packed, Distributed] }
                strategy: { type: object, x-kubernetes-preserve-unknown-fields: true }
                template: { type: object, x-kubernetes-preserve-unknown-fields: true }
"""


def built(overlay):
    text = subprocess.run(["kubectl", "kustomize", overlay], check=True, capture_output=True, text=True).stdout
    return list(yaml.safe_load_all(text))


def main():
    folder, keeper, *paths = sys.argv[1:]
    definitions = definitions_in(paths)
    allocation = yaml.safe_load(open(os.path.join(folder, "allocation.yaml")))
    failures = []
    for overlay in ["machine", "regions"]:
        documents = built(os.path.join(folder, overlay))
        failures += [f"{overlay}: {problem}" for problem in problems_of(documents, allocation, keeper, definitions)]
    # The last one has every kind.
    for kind, path, value in SLIPS + (KEEPER_SLIPS if keeper else []):
        if not problems_of(*slipped(documents, allocation, kind, path, value), keeper, {}):
            failures.append(f"not noticed: {kind} {path}: {value}")
    with tempfile.NamedTemporaryFile("w", suffix=".yaml") as file:
        file.write(SMALL_DEFINITION)
        file.flush()
        small = definitions_in([file.name])
        if list(definition_problems(documents, small)):
            failures.append(f"a definition refuses what it knows: {list(definition_problems(documents, small))}")
        for path, value in [("spec.schedulling", "Packed"), ("spec.scheduling", "packed")]:
            if not list(definition_problems(slipped(documents, allocation, "Fleet", path, value)[0], small)):
                failures.append(f"not noticed by a definition: {path}: {value}")
    if paths and not definitions:
        failures.append(f"no definitions in {paths}")
    for failure in failures:
        print(failure, file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
