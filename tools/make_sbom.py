#!/usr/bin/env python3
"""Prints what a release is made of, as SPDX 2.3: every file of the tarball with its sums, and what the library needs.

usage: make_sbom.py FOLDER VERSION SECONDS PACKAGE.deb...
FOLDER holds what the tarball holds, SECONDS is the time of the release, the packages tell what the library needs."""

import datetime
import hashlib
import json
import pathlib
import re
import subprocess
import sys


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.]", "-", name)


def package(name, version, **more):
    return {"SPDXID": identifier("Package", name), "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
            "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION", "copyrightText": "NOASSERTION", **more}


def needs(debs):
    """What the packages with programs and libraries depend on, beside each other, as {name: version}."""
    found = {}
    for deb in debs:
        fields = subprocess.run(["dpkg-deb", "-f", deb, "Depends"], capture_output=True, text=True, check=True).stdout
        for name, version in re.findall(r"([a-z0-9][a-z0-9.+-]+)(?:\s*\(>= ([^)]+)\))?(?:,|\n|$)", fields):
            if "tqosbase" not in name:
                found[name] = max(found.get(name, ""), version)
    return found


def main():
    folder, version, seconds, *debs = sys.argv[1:]
    folder = pathlib.Path(folder)
    files, sums = [], []
    for path in sorted(p for p in folder.rglob("*") if p.is_file() and not p.is_symlink()):
        name, data = "./" + str(path.relative_to(folder)), path.read_bytes()
        sha1 = hashlib.sha1(data).hexdigest()
        sums.append(sha1)
        files.append({"SPDXID": identifier("File", name[2:]), "fileName": name, "copyrightText": "NOASSERTION",
                      "licenseConcluded": "NOASSERTION",
                      "checksums": [{"algorithm": "SHA1", "checksumValue": sha1},
                                    {"algorithm": "SHA256", "checksumValue": hashlib.sha256(data).hexdigest()}]})
    library = package(
        "TqOsBase", version, supplier="Organization: The TqOsBase developers", filesAnalyzed=True,
        licenseDeclared="NONE", copyrightText="2026 the owner of the TqOsBase repository",
        packageVerificationCode={"packageVerificationCodeValue": hashlib.sha1("".join(sorted(sums)).encode()).hexdigest()},
        hasFiles=[file["SPDXID"] for file in files])
    others = [package(name, least or "NOASSERTION", filesAnalyzed=False) for name, least in sorted(needs(debs).items())]
    digest = hashlib.sha256("".join(sums).encode()).hexdigest()
    document = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": folder.name,
        "documentNamespace": f"https://tqosbase.invalid/spdx/{folder.name}-{digest}",
        "creationInfo": {"created": datetime.datetime.fromtimestamp(int(seconds), datetime.timezone.utc)
                         .strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": ["Tool: make_sbom.py"]},
        "packages": [library, *others], "files": files,
        "relationships": [
            {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": library["SPDXID"]},
            *({"spdxElementId": library["SPDXID"], "relationshipType": "DEPENDS_ON", "relatedSpdxElement": other["SPDXID"]}
              for other in others)]}
    json.dump(document, sys.stdout, indent=1)
    print()


main()
