# A document as a page for the browser: the part of Markdown that the documents use. That is headings, paragraphs, lists of
# one level, tables, blocks of code by four blanks; within the text code, bold, links and pictures.

function Escaped(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    gsub(/"/, "\\&quot;", text)
    return text
}

# Links between documents lead from page to page.
function Target(link) {
    sub(/\.md$/, ".html", link)
    sub(/\.md#/, ".html#", link)
    return link
}

# Without code, escaped.
function Marked(text,   result, middle, words, link) {
    result = ""
    while (match(text, /!?\[[^]]*\]\([^)]*\)/)) {
        middle = substr(text, RSTART, RLENGTH)
        result = result substr(text, 1, RSTART - 1)
        text = substr(text, RSTART + RLENGTH)
        words = substr(middle, index(middle, "[") + 1, index(middle, "](") - index(middle, "[") - 1)
        link = substr(middle, index(middle, "](") + 2)
        link = Target(substr(link, 1, length(link) - 1))
        if (middle ~ /^!/) result = result "<img src=\"" link "\" alt=\"" words "\">"
        else result = result "<a href=\"" link "\">" words "</a>"
    }
    text = result text
    while (match(text, /\*\*[^*]+\*\*/)) {
        text = substr(text, 1, RSTART - 1) "<strong>" substr(text, RSTART + 2, RLENGTH - 4) "</strong>" \
            substr(text, RSTART + RLENGTH)
    }
    return text
}

# Every second piece between backticks is code.
function Inline(text,   pieces, count, result, i) {
    count = split(Escaped(text), pieces, "`")
    result = Marked(pieces[1])
    for (i = 2; i <= count; i++)
        result = result (i % 2 ? Marked(pieces[i]) : "<code>" pieces[i] "</code>")
    return result
}

# The name by which links find a heading.
function Name(heading) {
    heading = tolower(heading)
    gsub(/[^a-z0-9 _-]/, "", heading)
    gsub(/ /, "-", heading)
    return heading
}

function Row(line, cell,   cells, count, i) {
    sub(/^\| */, "", line)
    sub(/ *\|$/, "", line)
    count = split(line, cells, / *\| */)
    printf "<tr>"
    for (i = 1; i <= count; i++)
        printf "<%s>%s</%s>", cell, Inline(cells[i]), cell
    print "</tr>"
}

# Ends the block that is open: its text is complete only now.
function End() {
    if (block == "p") print "<p>" Inline(text) "</p>"
    if (block == "li") print "<li>" Inline(text) "</li>"
    if (block == "pre") print "</pre>"
    if (block == "table") print "</table>"
    block = ""
    text = ""
}

function EndList() {
    End()
    if (inList) print "</ul>"
    inList = 0
}

function Begin(title) {
    print "<!DOCTYPE html>"
    print "<html lang=\"en\">"
    print "<head>"
    print "<meta charset=\"utf-8\">"
    print "<meta name=\"viewport\" content=\"width=device-width\">"
    print "<title>" Escaped(title) "</title>"
    print "<style>"
    print "body { font-family: \"Segoe UI\", Tahoma, sans-serif; line-height: 1.5; max-width: 50em; margin: 2em auto; padding: 0 1em; }"
    print "code, pre { font-family: Consolas, \"Courier New\", monospace; }"
    print "pre { overflow: auto; padding: 0.5em 1em; border: 1px solid; }"
    print "table { border-collapse: collapse; }"
    print "th, td { border: 1px solid; padding: 0.2em 0.6em; text-align: left; vertical-align: top; }"
    print "img { max-width: 100%; }"
    print "</style>"
    print "</head>"
    print "<body>"
    begun = 1
}

{ sub(/\r$/, "") }

/^#+ / {
    EndList()
    level = index($0, " ") - 1
    heading = substr($0, level + 2)
    if (!begun) Begin(heading)
    printf "<h%d id=\"%s\">%s</h%d>\n", level, Name(heading), Inline(heading), level
    next
}

# A blank line within code belongs to it if code follows.
/^ *$/ {
    if (block == "pre") blanks++
    else End()
    next
}

/^    / && block != "p" && block != "li" {
    if (block != "pre") {
        EndList()
        printf "<pre>"
        block = "pre"
        blanks = 0
    }
    while (blanks > 0) {
        print ""
        blanks--
    }
    print Escaped(substr($0, 5))
    next
}

/^\|/ {
    if (block != "table") {
        EndList()
        print "<table>"
        block = "table"
        Row($0, "th")
    } else if ($0 !~ /^[-| ]+$/) {
        Row($0, "td")
    }
    next
}

/^- / {
    End()
    if (!inList) print "<ul>"
    inList = 1
    block = "li"
    text = substr($0, 3)
    next
}

{
    if (block == "p" || block == "li") {
        sub(/^ +/, "")
        text = text " " $0
        next
    }
    EndList()
    block = "p"
    text = $0
}

END {
    EndList()
    print "</body>"
    print "</html>"
}
