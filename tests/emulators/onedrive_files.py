"""The account of the OneDrive emulator: its folders and files by id, kept under one folder.

Items live in FOLDER/index.json, each file's bytes in FOLDER/files/<number>; names are data,
never paths on disk, so nothing here reaches outside the folder. Names are unique in a folder
whatever their case, and the service's name rules are kept: no / \\ * < > ? : | ", no control
character, no leading or trailing blank, no trailing dot, at most 255 characters.
"""

import json
import os
import time

from box_emulator import Reply

USER_ID = "5a1e9c0b7d3f2468"
ROOT_ID = "folder." + USER_ID
LONGEST_NAME = 255
FORBIDDEN_IN_NAMES = set('/\\*<>?:|"')


def time_text(seconds=None):
    return time.strftime("%Y-%m-%dT%H:%M:%S+0000", time.gmtime(seconds))


class LiveError(Exception):
    """A refusal of the API host, in the service's error object."""

    def __init__(self, status, code, message, headers=()):
        super().__init__(message)
        self.status, self.code, self.message, self.headers = status, code, message, list(headers)

    def reply(self):
        return json_reply(self.status, {"error": {"code": self.code, "message": self.message}}, self.headers)


def json_reply(status, value, headers=()):
    return Reply(status, json.dumps(value).encode(), "application/json; charset=UTF-8", headers)


def not_found(item_id):
    return LiveError(404, "resource_not_found", f"The resource '{item_id}' doesn't exist.")


def check_name(name):
    """Refuses a name the service refuses."""
    if not isinstance(name, str) or not name.strip():
        raise LiveError(400, "request_parameter_invalid", "The value of 'name' is missing or empty.")
    if (len(name) > LONGEST_NAME or name in (".", "..") or name != name.strip(" ") or name.endswith(".")
            or any(c in FORBIDDEN_IN_NAMES or ord(c) < 32 for c in name)):
        raise LiveError(400, "request_parameter_invalid", f"The value '{name}' of 'name' isn't a valid name.")


class Account:
    """The account's items by id, saved as JSON, and its files' bytes."""

    def __init__(self, folder, quota):
        self.files = os.path.join(folder, "files")
        self.index_path = os.path.join(folder, "index.json")
        self.quota = quota
        os.makedirs(self.files, exist_ok=True)
        if os.path.exists(self.index_path):
            with open(self.index_path, encoding="utf-8") as index:
                saved = json.load(index)
            self.items, self.next_number = saved["items"], saved["next_number"]
        else:
            self.next_number = 100
            self.items = {ROOT_ID: {"id": ROOT_ID, "type": "folder", "name": "SkyDrive", "parent": None,
                                    "description": "", "created": time_text(), "updated": time_text()}}
            self.save()

    def save(self):
        temporary = self.index_path + ".new"
        with open(temporary, "w", encoding="utf-8") as index:
            json.dump({"items": self.items, "next_number": self.next_number}, index, separators=(",", ":"))
        os.replace(temporary, self.index_path)

    def item(self, item_id, kind=None):
        item = self.items.get(item_id)
        if item is None or (kind is not None and item["type"] != kind):
            raise not_found(item_id)
        return item

    def children(self, folder_id):
        return sorted((item for item in self.items.values() if item["parent"] == folder_id),
                      key=lambda item: (item["type"] != "folder", item["name"].casefold()))

    def named(self, folder_id, name):
        key = name.casefold()
        return next((item for item in self.children(folder_id) if item["name"].casefold() == key), None)

    def space_used(self):
        return sum(item["size"] for item in self.items.values() if item["type"] == "file")

    def size(self, item):
        if item["type"] == "file":
            return item["size"]
        return sum(self.size(child) for child in self.children(item["id"]))

    def new_item(self, kind, parent_id, name, description=""):
        self.next_number += 1
        stamp = time_text()
        item = {"id": f"{kind}.{USER_ID}.{USER_ID.upper()}!{self.next_number}", "type": kind, "name": name,
                "parent": parent_id, "description": description, "created": stamp, "updated": stamp}
        if kind == "file":
            item.update(number=self.next_number, size=0)
        self.items[item["id"]] = item
        return item

    def add_folder(self, parent_id, name, description=""):
        self.item(parent_id, "folder")
        check_name(name)
        if self.named(parent_id, name) is not None:
            raise LiveError(409, "resource_already_exists",
                            f"The resource couldn't be created because a resource named '{name}' already exists.")
        item = self.new_item("folder", parent_id, name, description)
        self.save()
        return item

    def put_file(self, parent_id, name, data, overwrite):
        """Stores DATA as NAME; answers the item and whether it is new."""
        self.item(parent_id, "folder")
        check_name(name)
        existing = self.named(parent_id, name)
        if existing is not None and overwrite == "ChooseNewName":
            stem, dot, extension = name.rpartition(".")
            number = 1
            while existing is not None:
                name = f"{stem} {number}.{extension}" if dot and stem else f"{name} {number}"
                existing, number = self.named(parent_id, name), number + 1
        if existing is not None and (existing["type"] == "folder" or overwrite == "false"):
            raise LiveError(409, "resource_already_exists",
                            f"The resource couldn't be created because a resource named '{name}' already exists.")
        growth = len(data) - (existing["size"] if existing else 0)
        if self.space_used() + growth > self.quota:
            raise LiveError(507, "resource_quota_exceeded", "The user doesn't have enough available storage.")
        item = existing or self.new_item("file", parent_id, name)
        item.update(name=name, size=len(data), updated=time_text())
        with open(os.path.join(self.files, str(item["number"])), "wb") as stored:
            stored.write(data)
        self.save()
        return item, existing is None

    def update(self, item, body):
        if item["id"] == ROOT_ID:
            raise LiveError(403, "request_token_unauthorized", "The top folder can't be changed.")
        if "name" in body:
            check_name(body["name"])
            other = self.named(item["parent"], body["name"])
            if other is not None and other["id"] != item["id"]:
                raise LiveError(409, "resource_already_exists",
                                f"The resource couldn't be renamed because '{body['name']}' already exists.")
            item["name"] = body["name"]
        if "description" in body:
            item["description"] = body["description"]
        item["updated"] = time_text()
        self.save()

    def delete(self, item):
        if item["id"] == ROOT_ID:
            raise LiveError(403, "request_token_unauthorized", "The top folder can't be deleted.")
        self.remove(item)
        self.save()

    def remove(self, item):
        for child in self.children(item["id"]):
            self.remove(child)
        if item["type"] == "file":
            os.remove(os.path.join(self.files, str(item["number"])))
        del self.items[item["id"]]

    def read(self, item):
        with open(os.path.join(self.files, str(item["number"])), "rb") as stored:
            return stored.read()

    def path_of(self, item):
        names = []
        while item["parent"] is not None:
            names.insert(0, item["name"])
            item = self.items[item["parent"]]
        return "/" + "/".join(names)
