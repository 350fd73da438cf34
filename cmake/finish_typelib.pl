# finish_typelib.pl FILE.tlb
# Does what widl leaves undone in a type library: takes out the date, and marks application objects as predeclared.
use strict;
use warnings;

my ($path) = @ARGV;
open(my $file, '+<:raw', $path) or die "$path: $!\n";
my $bytes = do { local $/; <$file> };

# The time of day stands there as text and, behind the text's padding, as a VT_UI4: it becomes the beginning of 1970,
# so that equal sources make equal programs.
$bytes =~ s/(Created by WIDL version [0-9.]+ at ).{24}(\nW*\x13\0)..../$1Thu Jan  1 00:00:00 1970$2\0\0\0\0/s
    or die "$path: no date was found\n";

# The header, one number for each type, and the places of the tables, that of the types first.
my ($headerSize, $typeSize, $flagsInType) = (84, 100, 48);
my ($hasHelpLibrary, $isCoclass, $isAppObject, $isPredeclared) = (0x100, 5, 0x1, 0x8);
my ($variant, $count) = (unpack('V', substr($bytes, 20, 4)), unpack('V', substr($bytes, 32, 4)));
my $tables = $headerSize + ($variant & $hasHelpLibrary ? 4 : 0) + 4 * $count;
my ($types, $length) = unpack('VV', substr($bytes, $tables, 8));
die "$path: the types are not where they should be\n" if $length != $count * $typeSize;
for my $index (0 .. $count - 1) {
    my $type = $types + $index * $typeSize;
    my $flags = unpack('V', substr($bytes, $type + $flagsInType, 4));
    next if (unpack('V', substr($bytes, $type, 4)) & 0xf) != $isCoclass || !($flags & $isAppObject);
    substr($bytes, $type + $flagsInType, 4) = pack('V', $flags | $isPredeclared);
}

seek($file, 0, 0) and print {$file} $bytes and close($file) or die "$path: $!\n";
