"""The account's files of the Dropbox emulator, kept on disk under one folder.

Paths are taken as the service takes them: case-insensitive, each file and folder keeping
the case it was first made with, parent folders made on the way. Nothing here reaches
outside the folder: a path with "." or "..", a NUL, an empty name or a name too long for
the disk is refused before any lookup, and links found on disk are treated as absent.
"""

import datetime
import hashlib
import os
import secrets
import shutil
import string
import threading

# The largest body one chunk of a chunked upload may carry.
CHUNK_LIMIT = 150 * 1024 * 1024
# How long an upload id lives after its last chunk.
UPLOAD_LIFETIME = datetime.timedelta(hours=48)
LONGEST_NAME = 255


class ApiError(Exception):
    """A refusal: the status and the body's "error" text, or a whole body of its own."""

    def __init__(self, status, message, body=None, headers=()):
        super().__init__(message)
        self.status = status
        self.body = body if body is not None else {"error": message}
        self.headers = list(headers)


def http_date(moment):
    return moment.strftime("%a, %d %b %Y %H:%M:%S +0000")


def split_path(text):
    """The names of a decoded path ("/a/b/" or "//a/b": leading and trailing slashes go)."""
    trimmed = text.strip("/")
    if not trimmed:
        return []
    names = trimmed.split("/")
    for name in names:
        if name in ("", ".", "..") or "\0" in name or len(name.encode()) > LONGEST_NAME:
            raise ApiError(400, f"Invalid path: '{text}'")
    return names


def human_size(count):
    if count < 1024:
        return f"{count} bytes"
    for unit in ("KB", "MB", "GB", "TB"):
        count /= 1024.0
        if count < 1024 or unit == "TB":
            return f"{count:.1f} {unit}"
    return ""


def conflict_name(name, number):
    """"a.stowhvn" as "a (1).stowhvn", the name a commit takes beside a taken one."""
    stem, dot, extension = name.rpartition(".")
    if not dot or not stem:
        return f"{name} ({number})"
    return f"{stem} ({number}).{extension}"


class AccountFiles:
    """The tree under ROOT and the uploads in progress under UPLOADS."""

    def __init__(self, root, uploads):
        self.root = os.path.realpath(root)
        self.uploads_folder = os.path.realpath(uploads)
        os.makedirs(self.root, exist_ok=True)
        os.makedirs(self.uploads_folder, exist_ok=True)
        self.lock = threading.RLock()
        self.uploads = {}

    # -- lookup --

    def _entry(self, folder, name):
        """The name on disk in FOLDER that NAME stands for, whatever its case; links don't count."""
        key = name.casefold()
        for entry in os.listdir(folder):
            if entry.casefold() == key and not os.path.islink(os.path.join(folder, entry)):
                return entry
        return None

    def find(self, names):
        """The disk path of NAMES, or None when any part of it is missing."""
        current = self.root
        for name in names:
            if not os.path.isdir(current):
                return None
            entry = self._entry(current, name)
            if entry is None:
                return None
            current = os.path.join(current, entry)
        return current

    def display_path(self, disk_path):
        relative = os.path.relpath(disk_path, self.root)
        return "/" if relative == "." else "/" + relative

    def make_folders(self, names):
        """Makes each missing folder of NAMES; a file in the way is a 403."""
        current = self.root
        for name in names:
            entry = self._entry(current, name)
            if entry is None:
                os.mkdir(os.path.join(current, name))
                entry = name
            current = os.path.join(current, entry)
            if not os.path.isdir(current):
                raise ApiError(403, f"There is a file at '{self.display_path(current)}', not a folder.")
        return current

    def require(self, names):
        with self.lock:
            found = self.find(names)
            if found is None:
                raise ApiError(404, f"Path '/{'/'.join(names)}' not found")
            return found

    # -- metadata --

    def metadata(self, disk_path, with_contents=False):
        status = os.stat(disk_path)
        is_dir = os.path.isdir(disk_path)
        rev = f"{(status.st_ino << 24 ^ status.st_mtime_ns // 1000) & 0xFFFFFFFFFFFF:x}"
        entry = {
            "size": human_size(0 if is_dir else status.st_size),
            "bytes": 0 if is_dir else status.st_size,
            "thumb_exists": False,
            "rev": rev,
            "revision": int(rev, 16) & 0x7FFFFFFF,
            "modified": http_date(datetime.datetime.fromtimestamp(status.st_mtime, datetime.timezone.utc)),
            "path": self.display_path(disk_path),
            "is_dir": is_dir,
            "icon": "folder" if is_dir else "page_white",
            "root": "dropbox",
        }
        if not is_dir:
            entry["mime_type"] = "application/octet-stream"
            entry["client_mtime"] = entry["modified"]
        if with_contents:
            entry["contents"] = [self.metadata(os.path.join(disk_path, name)) for name in self.children(disk_path)]
            entry["hash"] = hashlib.md5(repr(entry["contents"]).encode()).hexdigest()
        return entry

    def children(self, folder):
        names = [name for name in os.listdir(folder) if not os.path.islink(os.path.join(folder, name))]
        return sorted(names, key=str.casefold)

    def bytes_used(self):
        total = 0
        for folder, _, files in os.walk(self.root):
            for name in files:
                path = os.path.join(folder, name)
                if not os.path.islink(path):
                    total += os.path.getsize(path)
        return total

    # -- file operations --

    def create_folder(self, names):
        with self.lock:
            if not names:
                raise ApiError(403, "There is already a folder at the given destination.")
            existing = self.find(names)
            if existing is not None:
                raise ApiError(403, f"There is already a folder at '{self.display_path(existing)}'.")
            return self.metadata(self.make_folders(names))

    def delete(self, names):
        with self.lock:
            if not names:
                raise ApiError(403, "The root folder can't be deleted.")
            found = self.require(names)
            entry = self.metadata(found)
            if os.path.isdir(found):
                shutil.rmtree(found)
            else:
                os.unlink(found)
            entry["is_deleted"] = True
            return entry

    def copy_or_move(self, source_names, target_names, move):
        with self.lock:
            source = self.require(source_names)
            if not source_names or not target_names:
                raise ApiError(403, "The root folder can't be copied or moved.")
            source_key = [name.casefold() for name in source_names]
            target_key = [name.casefold() for name in target_names]
            if target_key[: len(source_key)] == source_key and target_key != source_key:
                raise ApiError(403, "A folder can't be copied or moved into itself.")
            existing = self.find(target_names)
            if existing is not None and not (move and target_key == source_key):
                raise ApiError(403, f"A file or folder already exists at '/{'/'.join(target_names)}'.")
            parent = self.make_folders(target_names[:-1])
            target = os.path.join(parent, target_names[-1])
            if move:
                os.rename(source, target)
            elif os.path.isdir(source):
                shutil.copytree(source, target, symlinks=True)
            else:
                shutil.copy2(source, target)
            return self.metadata(target)

    # -- chunked uploads --

    def _new_upload_id(self):
        alphabet = string.ascii_letters + string.digits
        return "".join(secrets.choice(alphabet) for _ in range(22))

    def upload_reply(self, upload_id):
        upload = self.uploads[upload_id]
        return {"upload_id": upload_id, "offset": upload["offset"], "expires": http_date(upload["expires"])}

    def begin_chunk(self, upload_id, offset):
        """The upload a chunk at OFFSET goes to, held for the chunk; a new one without an id."""
        with self.lock:
            if upload_id is not None and offset is None:
                raise ApiError(400, "Missing parameter: offset")
            if upload_id is None:
                if offset not in (None, 0):
                    raise ApiError(400, "A new upload starts at offset 0.")
                upload_id = self._new_upload_id()
                self.uploads[upload_id] = {
                    "offset": 0,
                    "file": os.path.join(self.uploads_folder, upload_id),
                    "expires": datetime.datetime.now(datetime.timezone.utc) + UPLOAD_LIFETIME,
                    "busy": threading.Lock(),
                }
                open(self.uploads[upload_id]["file"], "wb").close()
            upload = self.uploads.get(upload_id)
            if upload is None:
                raise ApiError(404, "The upload_id was not found or has expired.")
            if not upload["busy"].acquire(blocking=False):
                raise ApiError(400, "Another chunk of this upload is being received.")
            if offset is not None and offset != upload["offset"]:
                upload["busy"].release()
                raise ApiError(400, "Wrong offset", body=self.upload_reply(upload_id))
            return upload_id

    def receive_chunk(self, upload_id, read, length):
        """Appends LENGTH bytes from READ; a body cut short leaves the upload as it was."""
        upload = self.uploads[upload_id]
        try:
            with open(upload["file"], "ab") as file:
                left = length
                while left > 0:
                    data = read(min(left, 1 << 20))
                    if not data:
                        file.truncate(upload["offset"])
                        return False
                    file.write(data)
                    left -= len(data)
            with self.lock:
                upload["offset"] += length
                upload["expires"] = datetime.datetime.now(datetime.timezone.utc) + UPLOAD_LIFETIME
            return True
        finally:
            upload["busy"].release()

    def commit(self, upload_id, names, overwrite, quota):
        with self.lock:
            upload = self.uploads.get(upload_id)
            if upload is None:
                raise ApiError(404, "The upload_id was not found or has expired.")
            if not names:
                raise ApiError(400, "A file can't be committed at the root.")
            if self.bytes_used() + upload["offset"] > quota:
                raise ApiError(507, "User is over Dropbox storage quota.")
            parent = self.make_folders(names[:-1])
            name = names[-1]
            existing = self._entry(parent, name)
            if existing is not None and overwrite and os.path.isfile(os.path.join(parent, existing)):
                name = existing
            else:
                number = 0
                while self._entry(parent, name) is not None:
                    number += 1
                    name = conflict_name(names[-1], number)
            target = os.path.join(parent, name)
            os.replace(upload["file"], target)
            del self.uploads[upload_id]
            return self.metadata(target)
