-- The protocol, its preference, its fields and what can be wrong with a datagram. Runs in Lua 5.2 and 5.4.
local orvanta = Proto("orvanta", "Orvanta Device Service")
local usual_service_port, first_client_port, last_client_port = 54320, 54321, 54336
local largest_datagram = 2048

orvanta.prefs.service_port = Pref.uint("Service port", usual_service_port,
    "The UDP port on which the device service listens: datagrams to it are requests")

local operation_names = {}
for _, way in ipairs({wire.to_service, wire.to_client}) do
    for code, row in pairs(way) do
        operation_names[code] = row.name
    end
end

local fields = {
    header = ProtoField.none("orvanta.header", "Header"),
    header_magic = ProtoField.uint16("orvanta.header.magic", "Magic", base.HEX),
    header_version = ProtoField.uint16("orvanta.header.version", "Version"),
    header_reserved = ProtoField.uint16("orvanta.header.reserved", "Reserved", base.HEX),
    op = ProtoField.none("orvanta.op", "Operation"),
    op_magic = ProtoField.uint8("orvanta.op.magic", "Magic", base.HEX),
    op_code = ProtoField.uint8("orvanta.op.code", "Code", base.DEC, operation_names),
    op_length = ProtoField.uint16("orvanta.op.length", "Length"),
    op_tag = ProtoField.uint8("orvanta.op.tag", "Tag"),
    device_id = ProtoField.uint32("orvanta.device_id", "device_id"),
    unread = ProtoField.bytes("orvanta.unread", "Not read"),
    response_in = ProtoField.framenum("orvanta.response_in", "Response in frame", base.NONE, frametype.RESPONSE),
    request_in = ProtoField.framenum("orvanta.request_in", "Request in frame", base.NONE, frametype.REQUEST),
    response_time = ProtoField.relative_time("orvanta.response_time", "Response time"),
}

-- The names of a field's values, by the name of the field.
local value_names = {
    device_type = wire.device_types,
    enabled = {[0] = "off", [1] = "on"},
    handedness = wire.handednesses,
    status = wire.statuses,
}

-- People read a short id as four hexadecimal digits.
local bases = {short_id = base.HEX}

local makers = {
    u8 = function(filter, name) return ProtoField.uint8(filter, name, base.DEC, value_names[name]) end,
    u16 = function(filter, name) return ProtoField.uint16(filter, name, bases[name] or base.DEC) end,
    u32 = function(filter, name) return ProtoField.uint32(filter, name) end,
    u64 = function(filter, name) return ProtoField.uint64(filter, name) end,
    f32 = function(filter, name) return ProtoField.float(filter, name) end,
    bytes = function(filter, name) return ProtoField.bytes(filter, name) end,
    text = function(filter, name) return ProtoField.string(filter, name) end,
    tail = function(filter, name) return ProtoField.bytes(filter, name) end,
}

-- Each operation is a field, and so is each field of its body but the device's id, which is one for all. A code that
-- travels both ways has the same fields for both.
local by_filter = {}
local function field_of(filter, make)
    by_filter[filter] = by_filter[filter] or make()
    return by_filter[filter]
end
for _, way in ipairs({wire.to_service, wire.to_client}) do
    for _, row in pairs(way) do
        local prefix = "orvanta." .. row.name
        row.body = field_of(prefix, function() return ProtoField.none(prefix, row.name) end)
        for _, one in ipairs(row.fields) do
            if one.name == "device_id" then
                one.field = fields.device_id
            else
                local filter = prefix .. "." .. one.name
                one.field = field_of(filter, function() return makers[one.type](filter, one.name) end)
            end
        end
    end
end

local all_fields = {}
for _, group in ipairs({fields, by_filter}) do
    for _, field in pairs(group) do
        all_fields[#all_fields + 1] = field
    end
end
orvanta.fields = all_fields

local function expert_info(name, text, severity)
    return ProtoExpert.new("orvanta.damage." .. name, text, expert.group.MALFORMED, severity)
end
-- After an error nothing more of the datagram is read; after a warning its other operations are.
local damage = {
    header_short = expert_info("header_short", "The datagram ends within its header", expert.severity.ERROR),
    header_magic = expert_info("header_magic", "The header's magic is wrong", expert.severity.ERROR),
    header_version = expert_info("header_version", "The header's version is wrong", expert.severity.ERROR),
    record_short = expert_info("record_short", "The datagram ends within its first operation record", expert.severity.ERROR),
    record_magic = expert_info("record_magic", "The magic of an operation record is wrong", expert.severity.ERROR),
    body_short = expert_info("body_short", "The body is shorter than its operation needs", expert.severity.ERROR),
    tail_short = expert_info("tail_short", "The tail is shorter than its count says", expert.severity.ERROR),
    length_past_end = expert_info("length_past_end", "The length field says more than there is", expert.severity.ERROR),
    unknown_code = expert_info("unknown_code", "Nobody knows the operation", expert.severity.WARN),
    wrong_way = expert_info("wrong_way", "The operation does not travel this way", expert.severity.WARN),
    length_wrong = expert_info("length_wrong", "The length field is not that of the body", expert.severity.WARN),
    trailing = expert_info("trailing", "Bytes after the last operation are dropped", expert.severity.WARN),
    too_large = expert_info("too_large", "A datagram has at most 2048 bytes", expert.severity.ERROR),
    not_captured = expert_info("not_captured", "The capture does not hold the rest of the datagram", expert.severity.WARN),
}
local all_experts = {}
for _, one in pairs(damage) do
    all_experts[#all_experts + 1] = one
end
orvanta.experts = all_experts
