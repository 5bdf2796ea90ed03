-- Puts the pages of docs/ together, chapter after chapter. A page's headings get the page's name in front, so that links
-- from page to page become links within the book.
local CHAPTERS = {
  "README", "tutorials", "user-guide", "segy-copy", "segd-copy", "reformat", "merge", "file-scan", "kills-report",
  "instrument-tests", "test-recordings", "dialogs", "messages", "jobs", "scripts", "virtual-drives", "dump-formats",
  "segy-reading", "segd-reading", "format-tpf", "format-kyr", "format-idx", "format-segy-description", "format-modules",
  "libkyr", "installing",
}
local NOT_FOR_READERS = { Start = true, More = true } -- sections of the README that the book has no use for

local function read(page)
  local file = assert(io.open(page == "README" and "README.md" or "docs/" .. page .. ".md"))
  local text = file:read("a")
  file:close()
  return text
end

local known = {} -- the chapters' titles
for _, name in ipairs(CHAPTERS) do known[name] = read(name):match("^# ([^\n]*)") end

-- The blocks without the sections that the book leaves out.
local function chosen(blocks)
  local kept, skipping = pandoc.List(), false
  for _, block in ipairs(blocks) do
    if block.t == "Header" then skipping = NOT_FOR_READERS[pandoc.utils.stringify(block)] or false end
    if not skipping then kept:insert(block) end
  end
  return kept
end

local function within(page)
  return {
    Header = function(header)
      header.identifier = header.level == 1 and page or page .. "-" .. header.identifier
      return header
    end,
    Link = function(link)
      local place = link.target:match("^#(.+)$")
      local other, part = link.target:match("([%w-]+)%.md#?(.*)$")
      if place then
        link.target = "#" .. page .. "-" .. place
      elseif other and known[other] then
        -- A file's name means nothing in a book.
        if pandoc.utils.stringify(link):match("^[%w/-]*%.md$") then link.content = { pandoc.Str(known[other]) } end
        link.target = "#" .. other .. (part ~= "" and "-" .. part or "")
      elseif not link.target:match("^https?:") then
        return link.content -- a file beside the book
      end
      return link
    end,
    Image = function(image)
      image.src = image.src:gsub("^docs/", "")
      return image
    end,
  }
end

function Pandoc(book)
  for _, page in ipairs(CHAPTERS) do
    local blocks = chosen(pandoc.read(read(page), "gfm").blocks)
    book.blocks:insert(pandoc.Div(pandoc.walk_block(pandoc.Div(blocks), within(page)).content, pandoc.Attr("", { "chapter", page })))
  end
  return book
end
