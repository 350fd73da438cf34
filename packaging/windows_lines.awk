# Text with the line ends of Windows.
{
    sub(/\r$/, "")
    printf "%s\r\n", $0
}
