-- A datagram: its header, its operations one after the other, and what is wrong with them. Client and service read
-- differently: a client consumes what the operation needs, a service what the length field says.

-- One datagram being read.
local reading = {}
reading.__index = reading

local function tag_text(tag)
    return tag ~= 0 and " tag=" .. tag or ""
end

function reading:tell(text)
    self.texts[#self.texts + 1] = text
end

-- Notes what is wrong with an item.
function reading:complain(item, name, text)
    if text then
        item:add_proto_expert_info(damage[name], text)
    else
        item:add_proto_expert_info(damage[name])
    end
    self:tell("[" .. name .. "]")
end

-- As above, where bytes are missing at the end: the capture may have left them out.
function reading:complain_of_end(item, name, text)
    if self.is_cut then
        self:complain(item, "not_captured")
    else
        self:complain(item, name, text)
    end
end

function reading:add_unread(at, stop)
    if at < stop then
        self.tree:add(fields.unread, self.tvb(at, stop - at))
    end
end

function reading:read_header()
    if self.size < wire.header_size then
        self:complain_of_end(self.tree, "header_short")
        return false
    end
    local tvb = self.tvb
    local item = self.tree:add(fields.header, tvb(0, wire.header_size))
    item:add_le(fields.header_magic, tvb(0, 2))
    item:add_le(fields.header_version, tvb(2, 2))
    item:add_le(fields.header_reserved, tvb(4, 2))
    if tvb(0, 2):le_uint() ~= wire.header_magic then
        self:complain(item, "header_magic")
        return false
    end
    if tvb(2, 2):le_uint() ~= wire.version then
        self:complain(item, "header_version")
        return false
    end
    return true
end

-- Each of these returns where the next operation begins, or nothing where the rest of the datagram is dropped.

function reading:skip(item, at, code, length, tag)
    local elsewhere = self.other_rows[code]
    self:tell((elsewhere and elsewhere.name or "operation " .. code) .. tag_text(tag))
    self:complain(item, elsewhere and "wrong_way" or "unknown_code")
    self:add_unread(at, math.min(at + length, self.size))
    if at + length <= self.size then
        return at + length
    end
    self:complain_of_end(item, "length_past_end")
end

function reading:read_body(item, code, at, length, tag)
    local row = self.rows[code]
    local stop = self.size
    if self.to_service then
        stop = math.min(stop, at + length)
    end
    local tree = item:add(row.body, self.tvb(at, math.min(row.size, stop - at)))
    local body_end, device, is_whole = add_body(tree, self.tvb, row, at, stop)
    self:tell(row.name .. tag_text(tag) .. (device and " device_id=" .. device or ""))
    item:set_len(wire.record_size + body_end - at)
    -- A client drops a damaged answer; a service refuses a damaged request under its tag.
    if is_whole or self.to_service then
        link_by_tag(item, self.pinfo, row, self.to_service, at, code, tag)
    end
    if not is_whole or self.to_service then
        self:add_unread(body_end, stop)
    end
    if not is_whole then
        local complain = stop < self.size and self.complain or self.complain_of_end
        if stop - at < row.size then
            complain(self, item, "body_short", row.name .. " needs " .. row.size .. " bytes, there are " .. stop - at)
        else
            complain(self, item, "tail_short")
        end
        return self.to_service and stop or nil
    end
    if length ~= body_end - at then
        self:complain(item, "length_wrong", "The length field says " .. length .. ", the body has " .. body_end - at)
    end
    return self.to_service and stop or body_end
end

function reading:read_operation(at)
    local record = self.tvb(at, wire.record_size)
    local item = self.tree:add(fields.op, record)
    item:add(fields.op_magic, record(0, 1))
    if record(0, 1):uint() ~= wire.record_magic then
        self:complain(item, "record_magic")
        self:add_unread(at + 1, self.size)
        return
    end
    local code, length, tag = record(1, 1):uint(), record(2, 2):le_uint(), record(4, 1):uint()
    item:add(fields.op_code, record(1, 1))
    item:add_le(fields.op_length, record(2, 2))
    item:add(fields.op_tag, record(4, 1))
    item:append_text(": " .. (operation_names[code] or code))
    at = at + wire.record_size
    if not self.rows[code] then
        return self:skip(item, at, code, length, tag)
    end
    return self:read_body(item, code, at, length, tag)
end

function reading:read()
    if not self:read_header() then
        return
    end
    local at = wire.header_size
    if self.size - at < wire.record_size then
        self:add_unread(at, self.size)
        self:complain_of_end(self.tree, "record_short")
        return
    end
    while at and self.size - at >= wire.record_size do
        at = self:read_operation(at)
    end
    if at and at < self.size then
        self:add_unread(at, self.size)
        self:complain_of_end(self.tree, "trailing")
    end
end

-- By the service's port; where that is none of the two, a datagram from one of the clients' ports is a request.
local function is_to_service(pinfo)
    local service = orvanta.prefs.service_port
    if pinfo.dst_port == service or pinfo.src_port == service then
        return pinfo.dst_port == service
    end
    return pinfo.src_port >= first_client_port and pinfo.src_port <= last_client_port
end

-- The system gives the clients' ports to other programs too: without the service's port the magic decides.
local function is_foreign(tvb, pinfo)
    local service = orvanta.prefs.service_port
    return pinfo.dst_port ~= service and pinfo.src_port ~= service and
        (tvb:len() < 2 or tvb(0, 2):le_uint() ~= wire.header_magic)
end

function orvanta.dissector(tvb, pinfo, tree)
    if is_foreign(tvb, pinfo) then
        return 0
    end
    pinfo.cols.protocol = "Orvanta"
    local to_service = is_to_service(pinfo)
    local item = tree:add(orvanta, tvb())
    item:append_text(to_service and ", to the service" or ", to a client")
    local datagram = setmetatable({
        tvb = tvb, pinfo = pinfo, tree = item, size = tvb:len(), is_cut = tvb:len() < tvb:reported_len(),
        to_service = to_service, rows = to_service and wire.to_service or wire.to_client,
        other_rows = to_service and wire.to_client or wire.to_service, texts = {},
    }, reading)
    if tvb:reported_len() > largest_datagram then
        datagram:complain(item, "too_large")
    end
    datagram:read()
    pinfo.cols.info = table.concat(datagram.texts, "; ")
    return tvb:len()
end

local udp_ports = DissectorTable.get("udp.port")
local registered_port
local function register_service_port()
    local port = orvanta.prefs.service_port
    if registered_port and (registered_port < usual_service_port or registered_port > last_client_port) then
        udp_ports:remove(registered_port, orvanta)
    end
    if port > 0 then
        udp_ports:add(port, orvanta)
    end
    registered_port = port
end
for port = usual_service_port, last_client_port do
    udp_ports:add(port, orvanta)
end
register_service_port()
function orvanta.prefs_changed()
    register_service_port()
end
