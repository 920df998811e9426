-- Pages link to each other as they do among the sources, and wide tables are scrolled by themselves.

local root = ""

local function exists(path)
  local file = io.open(path)
  if file then file:close() end
  return file ~= nil
end

return {
  {
    Meta = function(meta) root = pandoc.utils.stringify(meta.root) end,
  },
  {
    Link = function(link)
      if not link.target:match("^%a+:") then
        link.target = link.target:gsub("%.md$", ".html"):gsub("%.md#", ".html#"):gsub("docs/decisions$", "docs/decisions/index.html")
      end
      return link, false
    end,
    -- A page that is named by its path becomes a link.
    Str = function(text)
      local before, path, after = text.text:match("^(%(?)([%w/-]+%.md)([,;:.)]*)$")
      if path and exists(path) then
        return {pandoc.Str(before), pandoc.Link(path, root .. path:gsub("%.md$", ".html")), pandoc.Str(after)}
      end
    end,
    Table = function(table) return pandoc.Div(table, {class = "wide"}) end,
  },
}
