-- A body's fields in the tree, and the pairs of request and answer.

-- The text up to its first zero. What is no UTF-8 is shown by replacements.
local function text_of(range)
    local length = #range:raw():match("^[^\0]*")
    return length > 0 and range(0, length):string(ENC_UTF_8) or ""
end

local function add_field(tree, one, range)
    if one.type == "text" then
        tree:add(one.field, range, text_of(range))
    elseif one.type == "bytes" or one.type == "tail" then
        tree:add(one.field, range)
    else
        for at = 0, range:len() - 1, one.size do
            tree:add_le(one.field, range(at, one.size))
        end
    end
end

-- Adds the fields that lie whole before `stop`. Returns the place after the last of them, the device's id, and true
-- when all fields were there.
local function add_body(tree, tvb, row, at, stop)
    local device, count_before
    for _, one in ipairs(row.fields) do
        local size = one.type == "tail" and count_before or one.count * one.size
        if at + size > stop then
            return at, device, false
        end
        if size > 0 then
            local range = tvb(at, size)
            add_field(tree, one, range)
            if one.name == "device_id" then
                device = range:le_uint()
            end
            count_before = one.type == "u8" and range:uint()
        end
        at = at + size
    end
    return at, device, true
end

-- The last request of each client and tag that has no answer yet; and, by frame and place, the frame and time of each
-- request's answer and of each answer's request. Filled when a frame is seen for the first time.
local waiting, answers, requests

function orvanta.init()
    waiting, answers, requests = {}, {}, {}
end

local function client_and_tag(address, port, tag)
    return tostring(address) .. " " .. port .. " " .. tag
end

local function note_request(pinfo, place, row, tag)
    if row.answer then
        waiting[client_and_tag(pinfo.src, pinfo.src_port, tag)] =
            {frame = pinfo.number, time = pinfo.rel_ts, place = place, answer = row.answer}
    end
end

local function note_answer(pinfo, place, code, tag)
    local key = client_and_tag(pinfo.dst, pinfo.dst_port, tag)
    local request = waiting[key]
    if request and (code == request.answer or code == wire.ack or code == wire.service_error) then
        waiting[key] = nil
        local seconds = pinfo.rel_ts - request.time
        requests[place] = {frame = request.frame, seconds = seconds}
        answers[request.place] = {frame = pinfo.number, seconds = seconds}
    end
end

local function time_of(seconds)
    local whole = math.floor(seconds)
    return NSTime.new(whole, math.floor((seconds - whole) * 1e9 + 0.5))
end

local function add_other(tree, field, other)
    if other then
        tree:add(field, other.frame):set_generated()
        tree:add(fields.response_time, time_of(other.seconds)):set_generated()
    end
end

-- Links an operation with its answer or its request by the tag. Tag 0 links nothing: nobody waits.
local function link_by_tag(tree, pinfo, row, to_service, at, code, tag)
    if tag == 0 then
        return
    end
    local place = pinfo.number .. " " .. at
    if not pinfo.visited then
        if to_service then
            note_request(pinfo, place, row, tag)
        elseif row.copies_tag then
            note_answer(pinfo, place, code, tag)
        end
    end
    add_other(tree, fields.response_in, answers[place])
    add_other(tree, fields.request_in, requests[place])
end
