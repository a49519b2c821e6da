#!/usr/bin/python3
"""Writes quillmere-VERSION.spdx.json: which libraries, of which version, are linked into each package (SPDX 2.3).

Usage: bill_of_materials.py VERSION COMMIT FOLDER
FOLDER holds the packages and gets the file. Its time is SOURCE_DATE_EPOCH. Versions are those of the Debian packages that
are installed on this machine, from which the libraries were linked.
"""
import datetime
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

MAKER = "Person: Rowan Thistle (support@quillmere.example)"
OWN_TERMS = "LicenseRef-Quillmere"


def kind_of(package):
    """The kind of package, as packaging/libraries.json names it."""
    return "debian" if package.suffix == ".deb" else re.search("(linux|windows)-[^.]+", package.name)[0]


def debian_version(package):
    command = ["dpkg-query", "--show", "--showformat", "${Version}", package]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def described(name, version, supplier, licence, **more):
    return {"SPDXID": "SPDXRef-" + re.sub("[^A-Za-z0-9.]+", "-", f"{name}-{version}"), "name": name,
            "versionInfo": version, "supplier": supplier, "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": licence, "licenseDeclared": licence, "copyrightText": "NOASSERTION", **more}


def described_package(file, version):
    digest = hashlib.sha256(file.read_bytes()).hexdigest()
    return described(file.name, version, MAKER, OWN_TERMS, packageFileName=file.name,
                     checksums=[{"algorithm": "SHA256", "checksumValue": digest}])


def described_library(library, debian_package):
    version = debian_version(debian_package)
    reference = {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                 "referenceLocator": f"pkg:deb/debian/{debian_package}@{version.replace('+', '%2B')}"}
    return described(library["name"], version, "Organization: Debian", library["licence"], externalRefs=[reference])


def bill_of_materials(version, commit, folder):
    libraries = json.loads(pathlib.Path(__file__).with_name("libraries.json").read_text())
    described_things, relations = {}, []

    def relate(one, relation, other):
        relations.append({"spdxElementId": one, "relationshipType": relation, "relatedSpdxElement": other})

    for file in sorted(folder.glob("quillmere*")):
        package = described_package(file, version)
        described_things[package["SPDXID"]] = package
        relate("SPDXRef-DOCUMENT", "DESCRIBES", package["SPDXID"])
        for library in libraries:
            debian_package = library["packages"].get(kind_of(file), library["packages"].get("any"))
            if debian_package:
                linked = described_library(library, debian_package)
                described_things[linked["SPDXID"]] = linked
                relate(package["SPDXID"], "STATIC_LINK", linked["SPDXID"])

    created = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"quillmere-{version}", "documentNamespace": f"https://quillmere.example/{version}/{commit}",
            "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                             "creators": [MAKER, "Tool: quillmere-bill-of-materials"]},
            "packages": list(described_things.values()), "relationships": relations,
            "hasExtractedLicensingInfos": [
                {"licenseId": OWN_TERMS, "name": "Terms of Quillmere",
                 "extractedText": "Copyright 2026 Rowan Thistle. All rights reserved."}]}


if __name__ == "__main__":
    release_version, release_commit, release_folder = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    text = json.dumps(bill_of_materials(release_version, release_commit, release_folder), indent=2)
    (release_folder / f"quillmere-{release_version}.spdx.json").write_text(text + "\n")
