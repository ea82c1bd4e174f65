"""The account of the SugarSync emulator: its folders and files by reference, kept under one folder.

Every item is known by its id (":sc:566494:<n>"); names are data only, kept in the index and
never used to make a path on disk, so a name like ".." or "a/b" can't reach outside the
folder. The index lives in FOLDER/index.json, each file's bytes in FOLDER/files/<n>.

As the service does, deleting a folder does not delete what it holds: the items inside are
orphaned, still counted in the usage but reachable by no one.
"""

import json
import os
import time

USER_ID = "566494"
# The user's sync folders, made with the account; none of them can be renamed or deleted.
SYNC_FOLDERS = {"1": "Web Archive", "2": "Magic Briefcase", "3": "Mobile Photos", "9": "Deleted Files"}
MAGIC_BRIEFCASE = f":sc:{USER_ID}:2"


class ServiceError(Exception):
    """A refusal of the service: a status and its reason phrase, with headers of its own."""

    def __init__(self, status, reason, headers=()):
        super().__init__(reason)
        self.status, self.reason, self.headers = status, reason, list(headers)


def not_found():
    return ServiceError(404, "Not Found")


def timestamp(moment=None):
    """A dateTime as the service writes them: milliseconds and an offset of -08:00."""
    moment = time.time() if moment is None else moment
    shifted = moment - 8 * 3600
    return time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(shifted)) + f".{int(moment * 1000) % 1000:03d}-08:00"


class Account:
    def __init__(self, folder, limit):
        self.files = os.path.join(folder, "files")
        self.index_path = os.path.join(folder, "index.json")
        self.limit = limit
        os.makedirs(self.files, exist_ok=True)
        if os.path.exists(self.index_path):
            with open(self.index_path, encoding="utf-8") as index:
                saved = json.load(index)
            self.items, self.next_number = saved["items"], saved["next_number"]
        else:
            self.next_number = 1000
            stamp = timestamp()
            self.items = {self.item_id(number): {"kind": "folder", "name": name, "parent": None, "created": stamp,
                                                 "sync": True}
                          for number, name in SYNC_FOLDERS.items()}
            self.save()

    @staticmethod
    def item_id(number):
        return f":sc:{USER_ID}:{number}"

    def save(self):
        temporary = self.index_path + ".new"
        with open(temporary, "w", encoding="utf-8") as index:
            json.dump({"items": self.items, "next_number": self.next_number}, index, separators=(",", ":"))
        os.replace(temporary, self.index_path)

    def new_id(self):
        self.next_number += 1
        return self.item_id(f"6552993_{self.next_number}")

    def data_path(self, item_id):
        # The id's last part is digits and "_" only: it is ours, never the client's text.
        return os.path.join(self.files, item_id.rsplit(":", 1)[1])

    def reachable(self, item_id):
        """Whether the item exists and every folder above it still does."""
        item = self.items.get(item_id)
        while item is not None and item["parent"] is not None:
            item = self.items.get(item["parent"])
        return item is not None and item.get("sync", False)

    def get(self, item_id, kind):
        item = self.items.get(item_id)
        if item is None or item["kind"] != kind or not self.reachable(item_id):
            raise not_found()
        return item

    def children(self, folder_id):
        return [(item_id, item) for item_id, item in self.items.items() if item["parent"] == folder_id]

    def usage(self):
        return sum(item.get("size", 0) for item in self.items.values() if item["kind"] == "file")

    def create(self, parent_id, kind, name, media_type=None):
        self.get(parent_id, "folder")
        item_id = self.new_id()
        item = {"kind": kind, "name": name, "parent": parent_id, "created": timestamp()}
        if kind == "file":
            item.update(size=0, modified=item["created"], mediaType=media_type, present=False)
        self.items[item_id] = item
        self.save()
        return item_id

    def update(self, item_id, kind, name=None, parent_id=None, media_type=None):
        item = self.get(item_id, kind)
        if item.get("sync"):
            raise ServiceError(403, "Forbidden")
        if parent_id is not None:
            self.get(parent_id, "folder")
            ancestor = parent_id
            while ancestor is not None:
                if ancestor == item_id:
                    raise ServiceError(400, "Bad Request")
                ancestor = self.items[ancestor]["parent"]
            item["parent"] = parent_id
        if name is not None:
            item["name"] = name
        if media_type is not None:
            item["mediaType"] = media_type
        self.save()

    def delete(self, item_id, kind):
        item = self.get(item_id, kind)
        if item.get("sync"):
            raise ServiceError(403, "Forbidden")
        del self.items[item_id]
        if kind == "file" and os.path.exists(self.data_path(item_id)):
            os.remove(self.data_path(item_id))
        self.save()

    def store(self, item_id, data):
        item = self.get(item_id, "file")
        if self.usage() - item["size"] + len(data) > self.limit:
            raise ServiceError(413, "Request Entity Too Large")
        with open(self.data_path(item_id), "wb") as stored:
            stored.write(data)
        item.update(size=len(data), modified=timestamp(), present=True)
        self.save()

    def read(self, item_id):
        item = self.get(item_id, "file")
        if not item["present"]:
            raise not_found()
        with open(self.data_path(item_id), "rb") as stored:
            return stored.read()

    def path_of(self, item_id):
        names = []
        while item_id is not None and item_id in self.items:
            names.insert(0, self.items[item_id]["name"])
            item_id = self.items[item_id]["parent"]
        return "/" + "/".join(names) if item_id is None else None

    def tree(self):
        """Every item by path (None for an orphan), for the tests to look at."""
        entries = []
        for item_id, item in self.items.items():
            if item.get("sync"):
                continue
            entry = {"ref": item_id, "type": item["kind"], "path": self.path_of(item_id) if self.reachable(item_id)
                     else None, "name": item["name"]}
            if item["kind"] == "file":
                entry.update(size=item["size"], presentOnServer=item["present"], mediaType=item["mediaType"])
            entries.append(entry)
        return sorted(entries, key=lambda entry: (entry["path"] is None, entry["path"] or "", entry["ref"]))

    def make_path(self, names, data=None):
        """Makes the folders of NAMES that are missing (the first a sync folder), and a file last if DATA."""
        folder_id = next((item_id for item_id, item in self.items.items()
                          if item.get("sync") and item["name"] == names[0]), None)
        if folder_id is None:
            raise not_found()
        for name in names[1:] if data is None else names[1:-1]:
            existing = [item_id for item_id, item in self.children(folder_id)
                        if item["kind"] == "folder" and item["name"] == name]
            folder_id = existing[0] if existing else self.create(folder_id, "folder", name)
        if data is None:
            return folder_id
        file_id = self.create(folder_id, "file", names[-1], "application/x-compressed")
        self.store(file_id, data)
        return file_id
