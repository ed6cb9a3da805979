#!/usr/bin/python3
"""An archive of the distribution (Orthanc) for the demonstration.

archive.py start FOLDER   starts one that keeps everything in FOLDER, waits until it answers, and prints its process id,
                          its DICOM port and its HTTP port
archive.py list PORT      prints what the archive at that HTTP port says it has
"""
import json
import os
import pathlib
import socket
import subprocess
import sys
import time
import urllib.request

PATIENCE = 30  # seconds until it answers


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def ask(port, path):
    with urllib.request.urlopen(f"http://127.0.0.1:{port}{path}", timeout=10) as answer:
        return json.load(answer)


def program():
    # It lies where only root looks by itself.
    for folder in [*os.environ["PATH"].split(":"), "/usr/sbin"]:
        if os.access(f"{folder}/Orthanc", os.X_OK):
            return f"{folder}/Orthanc"
    sys.exit("archive.py: Orthanc is not installed")


def start(folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True)
    dicom, http = free_port(), free_port()
    settings = {
        "Name": "demo",
        "StorageDirectory": str(folder / "storage"),
        "IndexDirectory": str(folder / "storage"),
        "Plugins": [],
        "HttpPort": http,
        "DicomPort": dicom,
        "DicomAet": "ARCHIVE",
        "RemoteAccessAllowed": False,
        "AuthenticationEnabled": False,
    }
    configuration = folder / "orthanc.json"
    configuration.write_text(json.dumps(settings))
    with open(folder / "log", "w") as log:
        process = subprocess.Popen([program(), str(configuration)], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                   env={**os.environ, "TCP_NODELAY": "1"}, start_new_session=True)
    for _ in range(PATIENCE * 10):
        try:
            ask(http, "/system")
            print(process.pid, dicom, http)
            return
        except OSError:
            if process.poll() is not None:
                break
            time.sleep(0.1)
    process.kill()
    sys.exit("archive.py: Orthanc does not answer:\n" + (folder / "log").read_text()[-2000:])


def show(port):
    counts = ask(port, "/statistics")
    print("{CountPatients} patients, {CountStudies} studies, {CountSeries} series, {CountInstances} instances".format(
        **counts))
    for series in sorted(ask(port, "/series?expand"), key=lambda each: each["ID"]):
        tags = series["MainDicomTags"]
        print(f"  {tags.get('Modality', '?'):4} {len(series['Instances']):4} instances  "
              f"{tags.get('SeriesDescription', '') or tags.get('SeriesInstanceUID', '')}")


def main():
    words = sys.argv[1:]
    if len(words) == 2 and words[0] == "start":
        start(words[1])
    elif len(words) == 2 and words[0] == "list":
        show(words[1])
    else:
        sys.exit(__doc__)


main()
