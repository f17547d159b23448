#!/usr/bin/env python3
"""Answers on a port of the loopback, which it prints, which kinds a cluster with Agones has, and nothing
else: enough for kubectl --dry-run=client."""
import http.server
import json

GROUPS = {
    "v1": {"Namespace": False, "ConfigMap": True},
    "networking.k8s.io/v1": {"NetworkPolicy": True},
    "policy/v1": {"PodDisruptionBudget": True},
    "monitoring.coreos.com/v1": {"PodMonitor": True},
    "agones.dev/v1": {"Fleet": True},
    "autoscaling.agones.dev/v1": {"FleetAutoscaler": True},
    "allocation.agones.dev/v1": {"GameServerAllocation": True},
}


def plural(kind):
    return kind.lower()[:-1] + "ies" if kind.endswith("y") else kind.lower() + "s"


def resources(group_version):
    return {"kind": "APIResourceList", "apiVersion": "v1", "groupVersion": group_version, "resources": [
        {"name": plural(kind), "singularName": kind.lower(), "namespaced": namespaced, "kind": kind,
         "verbs": ["create", "get"]} for kind, namespaced in GROUPS[group_version].items()]}


def groups():
    listed = []
    for group_version in GROUPS:
        if "/" in group_version:
            version = {"groupVersion": group_version, "version": "v1"}
            listed.append({"name": group_version.split("/")[0], "versions": [version], "preferredVersion": version})
    return {"kind": "APIGroupList", "apiVersion": "v1", "groups": listed}


ANSWERS = {"/api": {"kind": "APIVersions", "versions": ["v1"]}, "/apis": groups(), "/api/v1": resources("v1"),
           **{f"/apis/{name}": resources(name) for name in GROUPS if "/" in name}}


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        answer = ANSWERS.get(self.path.split("?")[0])
        body = json.dumps(answer or {"kind": "Status", "status": "Failure", "code": 404}).encode()
        self.send_response(200 if answer else 404)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
