-- What a document needs to become a page, beside its text: its first heading as its title, and links to other pages.
function Link(link)
    link.target = link.target:gsub("%.md$", ".html"):gsub("%.md#", ".html#")
    return link
end

function Pandoc(document)
    document.meta.pagetitle = document.blocks[1].content
    return document
end
