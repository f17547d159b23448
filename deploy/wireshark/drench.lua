-- Wireshark names every byte of a Drench room's datagrams: docs/protocol.md, "Looking at it".

local drench = Proto("drench", "Drench")

drench.prefs.ports = Pref.range("UDP ports", "5000", "The ports that rooms listen on", 65535)

local LONGEST_READ = 512
local RECEIPT_SIZE = 532
local STATE_SIZE = 244
local SLOTS_START = 4
local SLOT_SIZE = 60
local SLOTS = 4
local TALK_SIZE = 32
local TEXT_START = 2
local TEXT_SIZE = TALK_SIZE - TEXT_START
local SLOT_NAME_START = 40
local SLOT_NAME_SIZE = 12
local LONGEST_NAME = SLOT_NAME_SIZE - 1
local ADDRESS_LENGTH = 16

local KEYS = {
    [0] = "right", [1] = "left", [2] = "backward", [3] = "forward", [4] = "jump", [5] = "fire",
}

local CLIENT_RECORDS = {
    j = "join", d = "leave", k = "key", m = "view", t = "chat", x = "keep-alive",
}

local SERVER_RECORDS = {
    j = "receipt", s = "accepted", f = "refused", t = "talk", u = "state",
}

local fields = {
    from_room = ProtoField.bool("drench.from_room", "From the room"),
    code = ProtoField.string("drench.code", "Code"),
    id = ProtoField.string("drench.id", "Identifier"),
    name = ProtoField.string("drench.name", "Name"),
    text = ProtoField.string("drench.text", "Text"),
    after_end = ProtoField.bytes("drench.after_end", "After the end of the text"),
    key = ProtoField.int8("drench.key", "Key", base.DEC, KEYS),
    down = ProtoField.bool("drench.down", "Down"),
    dx = ProtoField.int32("drench.dx", "dx"),
    dy = ProtoField.int32("drench.dy", "dy"),
    slot = ProtoField.bytes("drench.slot", "Player"),
    rotation_x = ProtoField.float("drench.rotation.x", "Rotation x"),
    rotation_y = ProtoField.float("drench.rotation.y", "Rotation y"),
    rotation_z = ProtoField.float("drench.rotation.z", "Rotation z"),
    rotation_w = ProtoField.float("drench.rotation.w", "Rotation w"),
    position_x = ProtoField.float("drench.position.x", "Position x"),
    position_y = ProtoField.float("drench.position.y", "Position y"),
    position_z = ProtoField.float("drench.position.z", "Position z"),
    direction_x = ProtoField.float("drench.direction.x", "Direction x"),
    direction_y = ProtoField.float("drench.direction.y", "Direction y"),
    direction_z = ProtoField.float("drench.direction.z", "Direction z"),
    points = ProtoField.int32("drench.points", "Points"),
    shooting = ProtoField.bool("drench.shooting", "Shooting"),
    address_length = ProtoField.int32("drench.address_length", "Address length"),
    zero = ProtoField.bytes("drench.zero", "Zeros"),
    ignored = ProtoField.bytes("drench.ignored", "Ignored"),
}
-- ipairs, which Proto.fields is read with, would see nothing of a table of names.
local field_list = {}
for _, field in pairs(fields) do
    field_list[#field_list + 1] = field
end
drench.fields = field_list

local function finding(name, text, severity)
    return ProtoExpert.new("drench." .. name, text, expert.group.PROTOCOL, severity)
end

local findings = {
    unknown_code = finding("unknown_code", "Unknown code", expert.severity.WARN),
    unknown_id = finding("unknown_id", "Identifier that no player can have", expert.severity.WARN),
    unknown_key = finding("unknown_key", "Key that does not exist", expert.severity.WARN),
    short = finding("short", "Shorter than the record; what is missing counts as zeros",
        expert.severity.NOTE),
    long = finding("long", "Longer than the record; the rest is ignored", expert.severity.NOTE),
    wrong_size = finding("wrong_size", "Not the size of this record", expert.severity.WARN),
    not_zero = finding("not_zero", "Not the usual value", expert.severity.NOTE),
    open_name = finding("open_name", "Name without an end", expert.severity.WARN),
    no_number = finding("no_number", "Not a finite number", expert.severity.WARN),
    cut = finding("cut", "The capture holds only the head of this datagram", expert.severity.NOTE),
}
local finding_list = {}
for _, found in pairs(findings) do
    finding_list[#finding_list + 1] = found
end
drench.experts = finding_list

local function is_player(id)
    return id >= string.byte("1") and id <= string.byte("4")
end

-- A byte as it is written in a label: itself, or a number where it cannot be printed.
local function shown(byte)
    if byte > 32 and byte < 127 then
        return string.char(byte)
    end
    return string.format("\\x%02x", byte)
end

-- The bytes from `offset` on that are there, at most `size`.
local function present(buffer, offset, size)
    local first = math.min(offset, buffer:len())
    return buffer(first, math.min(size, buffer:len() - first))
end

local function byte_at(buffer, offset)
    return offset < buffer:len() and buffer(offset, 1):uint() or 0
end

local function int32_at(buffer, offset)
    local value = 0
    for i = 3, 0, -1 do
        value = value * 256 + byte_at(buffer, offset + i)
    end
    return value >= 0x80000000 and value - 0x100000000 or value
end

-- Bytes of `size` from `offset` on that stand before the first 0.
local function text_length(buffer, offset, size)
    local range = present(buffer, offset, size)
    for i = 0, range:len() - 1 do
        if range(i, 1):uint() == 0 then
            return i
        end
    end
    return range:len()
end

local function add_code(buffer, tree, records)
    local code = shown(byte_at(buffer, 0))
    local item = tree:add(fields.code, present(buffer, 0, 1), code)
    item:append_text(records[code] and " (" .. records[code] .. ")" or "")
    return code, item
end

local function unknown(buffer, code)
    return buffer:len() == 0 and "empty datagram" or "unknown code " .. code
end

local function add_ignored(buffer, tree, offset)
    if offset < buffer:len() then
        return tree:add(fields.ignored, buffer(offset))
    end
end

local function add_zeros(buffer, tree, offset, size)
    local range = present(buffer, offset, size)
    if range:len() == 0 then
        return
    end
    local item = tree:add(fields.zero, range)
    for i = 0, range:len() - 1 do
        if range(i, 1):uint() ~= 0 then
            item:add_proto_expert_info(findings.not_zero)
            return
        end
    end
end

-- Who sends or is meant; others than players get a finding.
local function add_id(buffer, tree, offset)
    local id = byte_at(buffer, offset)
    local item = tree:add(fields.id, present(buffer, offset, 1), shown(id))
    if not is_player(id) then
        item:add_proto_expert_info(findings.unknown_id)
    end
    return "player " .. shown(id), item
end

-- Text for a line of its own: UTF-8 as it is, else what is ASCII of it.
local function readable(range)
    local text = range:raw()
    -- What had to be replaced came back longer, and cut.
    if range:string(ENC_UTF_8) ~= text then
        text = string.gsub(text, "[^\32-\126]", "?")
    end
    return text
end

-- Text of at most `longest` bytes from `offset` on; returns it, its item and where it ends.
local function add_text(buffer, tree, field, offset, longest)
    local range = present(buffer, offset, text_length(buffer, offset, longest))
    local ending = offset + range:len()
    if range:len() == 0 then
        return "", tree:add(field, range, ""), ending
    end
    return readable(range), tree:add_packet_field(field, range, ENC_UTF_8), ending
end

local function add_talk(buffer, tree)
    local text, _, ending = add_text(buffer, tree, fields.text, TEXT_START, TEXT_SIZE)
    if ending < math.min(TALK_SIZE, buffer:len()) then
        tree:add(fields.after_end, present(buffer, ending, TALK_SIZE - ending))
    end
    return text
end

local function turn(count, positive, negative)
    return (count < 0 and negative or positive) .. " " .. math.abs(count)
end

-- What a client sends. Each takes the datagram and the tree, and returns what a reader wants to
-- know and how many bytes the record has.
local from_client = {}

function from_client.j(buffer, tree)
    local name, _, ending = add_text(buffer, tree, fields.name, 1, LONGEST_NAME)
    local rest = add_ignored(buffer, tree, ending)
    if buffer:len() > LONGEST_READ then
        rest:add_proto_expert_info(findings.long)
    end
    return "join as \"" .. name .. "\"", buffer:len()
end

function from_client.d(buffer, tree)
    return add_id(buffer, tree, 1) .. " leaves", 2
end

function from_client.k(buffer, tree)
    local player = add_id(buffer, tree, 1)
    local key = byte_at(buffer, 2)
    key = key > 127 and key - 256 or key
    local item = tree:add(fields.key, present(buffer, 2, 1), key)
    if not KEYS[key] then
        item:add_proto_expert_info(findings.unknown_key)
    end
    local down = byte_at(buffer, 3) ~= 0
    tree:add(fields.down, present(buffer, 3, 1), down)
    return string.format("%s %s %s", player, KEYS[key] or "key " .. key, down and "down" or "up"), 4
end

function from_client.m(buffer, tree)
    local player = add_id(buffer, tree, 1)
    add_zeros(buffer, tree, 2, 2)
    local dx = int32_at(buffer, 4)
    local dy = int32_at(buffer, 8)
    tree:add_le(fields.dx, present(buffer, 4, 4), dx)
    tree:add_le(fields.dy, present(buffer, 8, 4), dy)
    return string.format("%s turns %s, %s", player, turn(dx, "right", "left"),
        turn(dy, "down", "up")), 12
end

function from_client.t(buffer, tree)
    local player = add_id(buffer, tree, 1)
    return player .. ": " .. add_talk(buffer, tree), TALK_SIZE
end

-- Of nobody, which is how programs ask whether a room is there: it draws a receipt and does nothing.
local NOBODY = 0

function from_client.x(buffer, tree)
    if buffer:len() >= 2 and byte_at(buffer, 1) == NOBODY then
        tree:add(fields.id, buffer(1, 1), shown(NOBODY))
        return "asks whether a room is there", 2
    end
    return add_id(buffer, tree, 1) .. " is here", 2
end

local function dissect_from_client(buffer, tree)
    local code, item = add_code(buffer, tree, CLIENT_RECORDS)
    local record = from_client[code]
    if not record then
        item:add_proto_expert_info(findings.unknown_code)
        add_ignored(buffer, tree, 1)
        return unknown(buffer, code)
    end
    local summary, size = record(buffer, tree)
    if buffer:len() < size then
        tree:add_proto_expert_info(findings.short)
    end
    local rest = add_ignored(buffer, tree, size)
    if rest then
        rest:add_proto_expert_info(findings.long)
    end
    return code .. " " .. summary
end

local SLOT_FLOATS = {
    "rotation_x", "rotation_y", "rotation_z", "rotation_w", "position_x", "position_y",
    "position_z", "direction_x", "direction_y", "direction_z",
}

-- One player of a state; returns whether there is one, and whether it fires.
local function add_slot(buffer, tree, number)
    local start = SLOTS_START + (number - 1) * SLOT_SIZE
    local slot = tree:add(fields.slot, buffer(start, SLOT_SIZE))
    for i, name in ipairs(SLOT_FLOATS) do
        local range = buffer(start + 4 * (i - 1), 4)
        local item = slot:add_le(fields[name], range)
        local value = range:le_float()
        if value ~= value or math.abs(value) == math.huge then
            item:add_proto_expert_info(findings.no_number)
        end
    end

    local name_start = start + SLOT_NAME_START
    local name, name_item, ending = add_text(buffer, slot, fields.name, name_start, SLOT_NAME_SIZE)
    local left = name_start + SLOT_NAME_SIZE - ending
    if left == 0 then
        name_item:add_proto_expert_info(findings.open_name)
    else
        slot:add(fields.after_end, buffer(ending, left))
    end

    local points = buffer(start + 52, 4)
    slot:add_le(fields.points, points)
    local fires = buffer(start + 56, 1):uint() ~= 0
    slot:add(fields.shooting, buffer(start + 56, 1), fires)
    local id = buffer(start + 57, 1):uint()
    local id_item = slot:add(fields.id, buffer(start + 57, 1), shown(id))
    add_zeros(buffer, slot, start + 58, 2)
    if id == 0 then
        id_item:append_text(" (an empty slot)")
        slot:set_text(string.format("Slot %d: empty", number))
        return false, false
    end
    if not is_player(id) then
        id_item:add_proto_expert_info(findings.unknown_id)
    end
    slot:set_text(string.format("Slot %d: player %s, \"%s\", %d points%s", number, shown(id), name,
        points:le_int(), fires and ", firing" or ""))
    return true, fires
end

-- What the room sends, with the size that each record always has.
local from_room = {
    j = {
        size = RECEIPT_SIZE,
        dissect = function(buffer, tree)
            local last = RECEIPT_SIZE - 4
            add_zeros(buffer, tree, 1, last - 1)
            local length = buffer(last, 4)
            local item = tree:add_le(fields.address_length, length)
            if length:le_int() ~= ADDRESS_LENGTH then
                item:add_proto_expert_info(findings.not_zero)
            end
            return "receipt"
        end,
    },
    s = {
        size = 2,
        dissect = function(buffer, tree)
            return "accepted as " .. add_id(buffer, tree, 1)
        end,
    },
    f = {
        size = 1,
        dissect = function()
            return "refused: the room is full"
        end,
    },
    t = {
        size = TALK_SIZE,
        dissect = function(buffer, tree)
            local speaker
            if buffer(1, 1):uint() == string.byte("s") then
                tree:add(fields.id, buffer(1, 1), "s"):append_text(" (the server)")
                speaker = "notice"
            else
                speaker = add_id(buffer, tree, 1)
            end
            return speaker .. ": " .. add_talk(buffer, tree)
        end,
    },
    u = {
        size = STATE_SIZE,
        dissect = function(buffer, tree)
            add_zeros(buffer, tree, 1, SLOTS_START - 1)
            local players = 0
            local firing = 0
            for number = 1, SLOTS do
                local is_there, fires = add_slot(buffer, tree, number)
                players = players + (is_there and 1 or 0)
                firing = firing + (fires and 1 or 0)
            end
            return string.format("state: %d player%s, %d firing", players,
                players == 1 and "" or "s", firing)
        end,
    },
}

local function dissect_from_room(buffer, tree)
    local code, item = add_code(buffer, tree, SERVER_RECORDS)
    local record = from_room[code]
    if not record then
        item:add_proto_expert_info(findings.unknown_code)
        add_ignored(buffer, tree, 1)
        return unknown(buffer, code)
    end
    if buffer:len() ~= record.size then
        item:add_proto_expert_info(findings.wrong_size)
        add_ignored(buffer, tree, 1)
        return string.format("%s of %d bytes", SERVER_RECORDS[code], buffer:len())
    end
    return record.dissect(buffer, tree)
end

local function dissect(buffer, packet, tree, is_from_room)
    local subtree = tree:add(drench, buffer())
    subtree:add(fields.from_room, buffer(0, 0), is_from_room):set_generated()
    local summary
    if buffer:len() < buffer:reported_len() then
        local records = is_from_room and SERVER_RECORDS or CLIENT_RECORDS
        local code, item = add_code(buffer, subtree, records)
        item:add_proto_expert_info(findings.cut)
        add_ignored(buffer, subtree, 1)
        summary = code .. ", cut off by the capture"
    else
        summary = (is_from_room and dissect_from_room or dissect_from_client)(buffer, subtree)
    end
    -- Names and chat may hold anything, line ends included.
    summary = string.gsub(summary, "%c", "?")
    subtree:append_text(", " .. summary)
    packet.cols.protocol = "Drench"
    packet.cols.info = summary
end

function drench.dissector(buffer, packet, tree)
    -- The port of the two by which this dissector was found: the room's.
    dissect(buffer, packet, tree, packet.src_port == packet.match_uint)
    return buffer:len()
end

local function is_room(port)
    for first, last in string.gmatch(drench.prefs.ports, "(%d+)%-?(%d*)") do
        if port >= tonumber(first) and port <= (tonumber(last) or tonumber(first)) then
            return true
        end
    end
    return false
end

-- Datagrams without a byte, which UDP hands to no dissector, are looked for after all of them.
local empty = Proto("drench_empty", "Drench, empty datagrams")
local udp_length = Field.new("udp.length")
local UDP_HEADER_SIZE = 8

function empty.dissector(_, packet, tree)
    local length = udp_length()
    if not length or length.value ~= UDP_HEADER_SIZE then
        return
    end
    local to_room = is_room(packet.dst_port)
    if to_room or is_room(packet.src_port) then
        dissect(ByteArray.new():tvb("Empty datagram"), packet, tree, not to_room)
    end
end
register_postdissector(empty)

local registered
local function listen()
    local udp_ports = DissectorTable.get("udp.port")
    if registered then
        udp_ports:remove(registered, drench)
    end
    registered = drench.prefs.ports
    udp_ports:add(registered, drench)
end
drench.prefs_changed = listen
listen()
