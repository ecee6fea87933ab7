-- Dissects the protocol between TarnRemoteClient and its daemon. docs/protocol.md describes the format,
-- docs/wireshark.md how to install and use this file.

local tarn = Proto("tarn", "Tarn Daemon Protocol")
tarn.prefs.port = Pref.uint("TCP port", 53007, "The port on which the daemon listens")
tarn.prefs.mask = Pref.bool("Mask secrets", true, "Hide passwords, keys, tokens and security answers")
tarn.prefs.crc = Pref.bool("Check the CRC", true, "Slow for messages of many megabytes")

local version, end_marker = 7, 0xCEDE
local smallest, longest = 10, 256 * 1024 * 1024 -- bytes of a message
local fixed_size = { flag = 1, short = 2, int = 4, long = 8, double = 8 }
local secret_tags = { ky = true, pw = true, pp = true, sk = true, ku = true }

local function is_secret_key(key)
  return key == "token" or key:find("^securityAnswer") ~= nil
end

local statuses = {
  [-1] = "none", [0] = "done", [2] = "wrong password", [5] = "password needed", [6] = "session key alive",
  [7] = "asked by sender", [11] = "not enrolled", [15] = "not a recipient", [16] = "unknown envelope",
  [17] = "account disabled", [18] = "too many tries", [19] = "expired", [20] = "locked with a message",
  [21] = "locked", [25] = "enrollment unfinished", [26] = "damaged envelope", [34] = "not an envelope",
  [100] = "something is missing", [101] = "wrong value", [102] = "nothing matched", [103] = "configuration unreadable",
  [104] = "configuration wrong", [105] = "no login session", [106] = "account exists", [107] = "form refused",
  [108] = "not a message", [109] = "store failed", [110] = "internal error", [111] = "too large",
  [200] = "session key invalid",
}

-- A parameter's filter name is "tarn." and its tag; where a tag has further kinds, these follow it.
local parameter_fields = [[
  al map locales, an text attachment name, as flag ascending, bc text Bcc recipient, bf long envelopes refused,
  bn int build, bs long envelopes made, bt long start, ca int connections now, cc text Cc recipient, cd text text,
  ct int connections, ct.text text content type, da bytes data, da.items items items, da.map map record,
  ea text address, ea.double double BE mean, ec map configuration, ed long expiry, ed.double double BE deviation,
  el int stage, em text message, en text envelope, ep text configuration file, es text sender, es.long long BE count,
  fc text content type, fl int flags, fm text sender, fn text first or file name, id text message id, kd map features,
  kt map map, ku text session key, ky text password, lc text locale, le items localized envelopes, lk text link,
  ln text last name, ls flag lock, mf long free memory, mm text MIME message, mm.long long machine memory,
  ms int sensitivity, mt long total memory, mx int count, on text item name, or int simple registration,
  ou int one-click user, pc text enrollment id, pe int pass phrase given, po flag keep open, pp text pass phrase,
  pw text password, qa map questions and answers, qe int questions editable, qn int question count,
  rc array recipients, ri map selection, ri.items items recipients, sa double DE mean, sd double DE deviation,
  se long seconds to wait, sf text sort field, si int start, sj text subject, sk text session key,
  sl map session or locales, sm text status message, sq map security questions, ss long DE count, st short status,
  su int single sign-on user, tb text text body, tb.map map text bodies, tc text client, tc.array array Cc recipients,
  th text HTML body, th.map map HTML bodies, to text recipient or user, tr array To recipients, ty int type,
  ul text locale, uu text enrollment id, v text version, ve map answers, wd int wd, we int we, zo int time zone
]]
local constructors = {
  text = ProtoField.string, bytes = ProtoField.bytes, flag = ProtoField.bool, int = ProtoField.int32,
  long = ProtoField.int64, double = ProtoField.double, map = ProtoField.none, array = ProtoField.none,
  items = ProtoField.none,
  short = function(filter, name) return ProtoField.int16(filter, name, base.DEC, statuses) end,
}
local rules, all_fields = {}, {}
for key, kind, name in parameter_fields:gmatch("([%l.]+) (%l+) ([^,\n]+)") do
  local tag = (key .. " "):sub(1, 2)
  rules[key] = { tag = tag, kind = kind, field = constructors[kind]("tarn." .. key, name .. " (" .. tag .. ")"),
                 secret = secret_tags[tag] }
  table.insert(all_fields, rules[key].field)
end

local function rules_of(keys)
  local found = {}
  for key in keys:gmatch("%S+") do
    found[rules[key].tag] = rules[key]
  end
  return found
end

rules["le"].item = rules_of("lc rc en ct.text tb th")
rules["da.items"].item = rules_of("ty fl da fn on fc")
rules["ri.items"].item = rules_of("da.map")

local function command(name, request, reply)
  return { name = name, request = rules_of(request), reply = rules_of("st em cd " .. reply) }
end
local login = "lk se we wd "
local commands = {
  ST = command("version", "", "v bn bt ct ca mf mt mm.long bs bf ss sa sd es.long ea.double ed.double"),
  SD = command("stop", "", ""),
  LS = command("login", "tc to ky ep", login .. "sl"),
  VC = command("configuration check", "ep fm", "ec"),
  BE = command("encryption", "tc sl fm to cc bc ec ep mm", "en tb th an id ct.text lc le"),
  DE = command("decryption", "ky en ep to sk po", login .. "da.items ec ku uu fm ms tr tc.array id sj kt"),
  MI = command("tracking", "tc fm ky en ep sf as si mx", login .. "id si mx ri.items"),
  SI = command("tracking change", "tc ky en ep to ri ls sm ed", login),
  KV = command("key server", "ep", "kd"),
  LT = command("localized texts", "ep", "sl tb.map th.map"),
  EP = command("enrollment form", "tc ec ea ul", "su ou qn qe al sq"),
  EU = command("enrollment", "tc ec ea fn ln pw pc es ul or el zo pp pe qa", "ve el"),
}
local unknown_command = command("unknown command", "", "")

local field = {
  version = ProtoField.uint16("tarn.version", "Version"),
  command = ProtoField.string("tarn.command", "Command"),
  request = ProtoField.bool("tarn.request", "Request"),
  key = ProtoField.string("tarn.key", "Key"),
  value = ProtoField.string("tarn.value", "Value"),
  element = ProtoField.string("tarn.element", "Element"),
  item = ProtoField.none("tarn.item", "Item"),
  unknown = ProtoField.bytes("tarn.unknown", "Unknown parameter"),
  crc = ProtoField.uint32("tarn.crc", "CRC", base.HEX),
  reply_in = ProtoField.framenum("tarn.reply_in", "Reply in", base.NONE, frametype.RESPONSE),
  reply_to = ProtoField.framenum("tarn.reply_to", "Reply to", base.NONE, frametype.REQUEST),
  time = ProtoField.relative_time("tarn.time", "Time since the request"),
}
local function problem(filter, text, group, severity)
  return ProtoExpert.new("tarn.expert." .. filter, text, group, severity)
end
local expert_info = {
  crc = problem("crc", "Wrong CRC", expert.group.CHECKSUM, expert.severity.ERROR),
  malformed = problem("malformed", "Malformed", expert.group.MALFORMED, expert.severity.ERROR),
  incomplete = problem("incomplete", "Not whole", expert.group.REASSEMBLE, expert.severity.WARN),
  unknown = problem("unknown", "Unknown", expert.group.UNDECODED, expert.severity.WARN),
  status = problem("status", "Refused", expert.group.RESPONSE_CODE, expert.severity.NOTE),
}
for _, one in pairs(field) do
  table.insert(all_fields, one)
end
tarn.fields, tarn.experts = all_fields, expert_info

local crc_table = {}
for byte = 0, 255 do
  local register = byte
  for _ = 1, 8 do
    register = bit.bxor(bit.rshift(register, 1), bit.band(register, 1) * 0xEDB88320)
  end
  crc_table[byte] = register
end

local function crc32(bytes)
  local register, bxor, band, rshift = 0xFFFFFFFF, bit.bxor, bit.band, bit.rshift
  for i = 1, #bytes do
    register = bxor(crc_table[band(bxor(register, bytes:byte(i)), 0xFF)], rshift(register, 8))
  end
  return bit.bnot(register) % 0x100000000
end

-- The rule of the parameter at `at` (nil when unknown), its length, and how many bytes are read as its value (nil when
-- the length is impossible).
local function parameter_head(buffer, at, known)
  local rule, length = known[buffer(at, 2):raw()], buffer(at + 2, 4):int()
  local size = rule and fixed_size[rule.kind] or length
  return rule, length, size >= 0 and size <= longest and size or nil
end

-- How many bytes of the message at `offset` have at least still to arrive; none when it is broken.
local function missing(buffer, offset, known)
  local at, left = offset + 4, buffer:len() - offset - 4
  while left >= 6 and buffer(at, 2):uint() ~= end_marker do
    local _, _, size = parameter_head(buffer, at, known)
    if not size then
      return 0
    end
    at, left = at + 6 + size, left - 6 - size
  end
  return math.max(0, 6 - left)
end

-- Calls add(offset, length) for each value behind its length from `at` to `stop`.
local function each_sized(tree, buffer, at, stop, add)
  while at < stop do
    local length = at + 4 <= stop and buffer(at, 4):int() or -1
    if length < 0 or length > stop - at - 4 then
      tree:add_proto_expert_info(expert_info.malformed, "The lengths inside do not add up")
      return
    end
    add(at + 4, length)
    at = at + 4 + length
  end
end

local function letters(buffer, at)
  return (buffer(at, 2):raw():gsub("[^ -~]", "?"))
end

local function add_text(tree, text_field, buffer, at, length, secret)
  if secret and length > 0 and tarn.prefs.mask then
    return tree:add(text_field, buffer(at, 0), "(hidden)")
  end
  return tree:add_packet_field(text_field, buffer(at, length), ENC_UTF_8)
end

local add_parameters
local add_container = {}

function add_container.map(tree, buffer, at, size)
  local entry, key
  each_sized(tree, buffer, at, at + size, function(start, length)
    if entry then
      add_text(entry, field.value, buffer, start, length, is_secret_key(key))
      entry = nil
    else
      entry, key = add_text(tree, field.key, buffer, start, length), buffer(start, length):raw()
    end
  end)
  if entry then
    entry:add_proto_expert_info(expert_info.malformed, "A key without a value")
  end
end

function add_container.array(tree, buffer, at, size)
  each_sized(tree, buffer, at, at + size, function(start, length)
    add_text(tree, field.element, buffer, start, length)
  end)
end

function add_container.items(tree, buffer, at, size, rule)
  each_sized(tree, buffer, at, at + size, function(start, length)
    local item = tree:add(field.item, buffer(start, length))
    if add_parameters(item, buffer, start, start + length, rule.item) < start + length then
      item:add_proto_expert_info(expert_info.malformed, "The parameters do not fill the item")
    end
  end)
end

local function add_parameter(tree, buffer, at, length, size, rule, info)
  local start, item = at + 6
  if not rule then
    item = tree:add(field.unknown, buffer(start, size))
    item:add_proto_expert_info(expert_info.unknown, "Unknown parameter '" .. letters(buffer, at) .. "'")
  elseif add_container[rule.kind] then
    item = tree:add(rule.field, buffer(start, size))
    add_container[rule.kind](item, buffer, start, size, rule)
  elseif rule.kind == "text" then
    item = add_text(tree, rule.field, buffer, start, size, rule.secret)
  else
    item = tree:add(rule.field, buffer(start, size))
  end
  if size ~= length then
    item:add_proto_expert_info(expert_info.malformed, "Length " .. length .. ", but the value is read with " .. size)
  end
  if rule == rules["st"] then
    local status = buffer(start, 2):int()
    local text = ", " .. status .. " " .. (statuses[status] or "unknown status")
    info:append(text)
    if status ~= 0 then
      item:add_proto_expert_info(expert_info.status, "Refused" .. text)
    end
  end
end

-- Adds the parameters of a message, or without `info` those of an item, where the end marker means nothing. Returns
-- where they end: at the end marker, at `stop`, or before one that does not fit.
function add_parameters(tree, buffer, at, stop, known, info)
  while at + 6 <= stop and (not info or buffer(at, 2):uint() ~= end_marker) do
    local rule, length, size = parameter_head(buffer, at, known)
    if not size then
      tree:add_proto_expert_info(expert_info.malformed, "Length " .. length .. " of '" .. letters(buffer, at) .. "'")
      return at
    elseif size > stop - at - 6 then
      return at
    end
    add_parameter(tree, buffer, at, length, size, rule, info)
    at = at + 6 + size
  end
  return at
end

local waiting, exchanges -- requests without a reply, by client; the exchange that a message belongs to, by its place

function tarn.init()
  waiting, exchanges = {}, {}
end

-- On one connection, replies come in the order of their requests. The number of the TCP stream would be the better key,
-- but no other protocol's field can be read in the pass over a file that builds no tree.
local function add_exchange(tree, pinfo, place, is_request)
  if not pinfo.visited then
    local client = is_request and pinfo.src_port or pinfo.dst_port
    local queue = waiting[client] or {}
    waiting[client] = queue
    if is_request then
      exchanges[place] = { request = pinfo.number, sent = pinfo.rel_ts }
      table.insert(queue, exchanges[place])
    else
      exchanges[place] = table.remove(queue, 1)
      if exchanges[place] then
        exchanges[place].reply = pinfo.number
      end
    end
  end
  local exchange = exchanges[place]
  if is_request and exchange and exchange.reply then
    tree:add(field.reply_in, exchange.reply):set_generated()
  elseif not is_request and exchange then
    local seconds = pinfo.rel_ts - exchange.sent
    tree:add(field.reply_to, exchange.request):set_generated()
    tree:add(field.time, NSTime.new(math.floor(seconds), math.floor(seconds % 1 * 1e9))):set_generated()
  end
end

local function add_crc(tree, buffer, offset, at)
  local item = tree:add(field.crc, buffer(at, 4))
  if tarn.prefs.crc then
    local computed = crc32(buffer(offset, at - offset):raw())
    if computed == buffer(at, 4):uint() then
      item:append_text(" (right)")
    else
      item:add_proto_expert_info(expert_info.crc, string.format("Wrong CRC, computed 0x%08x", computed))
    end
  end
end

-- Returns where the message ends.
local function add_message(buffer, offset, pinfo, root, is_request, rule)
  local code, kind = letters(buffer, offset + 2), is_request and "request" or "reply"
  local tree = root:add(tarn, buffer(offset))
  tree:append_text(", " .. rule.name .. " " .. kind)
  tree:add(field.version, buffer(offset, 2))
  local command_item = tree:add(field.command, buffer(offset + 2, 2)):append_text(" (" .. rule.name .. ")")
  if rule == unknown_command then
    command_item:add_proto_expert_info(expert_info.unknown, "Unknown command")
  end
  tree:add(field.request, is_request):set_generated()
  add_exchange(tree, pinfo, pinfo.number .. ":" .. buffer:offset() + offset, is_request)

  local info = pinfo.cols.info
  if pinfo.private["tarn"] then
    info:append("; ")
  else
    info:clear()
    pinfo.private["tarn"] = "shown"
  end
  info:append(code .. " " .. rule.name .. " " .. kind)
  local at = add_parameters(tree, buffer, offset + 4, buffer:len(), rule[kind], info)
  info:fence()
  local stop = at + 6
  if stop <= buffer:len() and buffer(at, 2):uint() == end_marker then
    add_crc(tree, buffer, offset, at + 2)
  else
    stop = buffer:len()
    tree:add_proto_expert_info(expert_info.incomplete, stop - at .. " bytes are left without an end marker")
  end
  tree:set_len(stop - offset)
  return stop
end

function tarn.dissector(buffer, pinfo, root)
  pinfo.cols.protocol = "TARN"
  local is_request = pinfo.dst_port == pinfo.match_uint
  local offset = 0
  while offset < buffer:len() do
    local arrived = buffer:len() - offset
    if arrived >= 2 and buffer(offset, 2):uint() ~= version or arrived < 4 and pinfo.can_desegment == 0 then
      root:add(tarn, buffer(offset)):add_proto_expert_info(expert_info.malformed, "No message of version 7 begins here")
      return
    end
    local rule, more = unknown_command, smallest - arrived
    if arrived >= 4 then
      rule = commands[buffer(offset + 2, 2):raw()] or unknown_command
      more = missing(buffer, offset, is_request and rule.request or rule.reply)
    end
    if more > 0 and pinfo.can_desegment > 0 then
      pinfo.desegment_offset, pinfo.desegment_len = offset, more
      return
    end
    offset = add_message(buffer, offset, pinfo, root, is_request, rule)
  end
end

local tcp_port, port = DissectorTable.get("tcp.port"), tarn.prefs.port
tcp_port:add(port, tarn)

function tarn.prefs_changed()
  tcp_port:remove(port, tarn)
  port = tarn.prefs.port
  tcp_port:add(port, tarn)
end
