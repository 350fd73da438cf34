# undate_typelib.pl FILE.tlb
# widl puts the time of day into each type library, as text and as a number: it becomes the beginning of 1970, so that
# equal sources make equal programs.
use strict;
use warnings;

my ($path) = @ARGV;
open(my $file, '+<:raw', $path) or die "$path: $!\n";
my $bytes = do { local $/; <$file> };
# The number follows the text's padding as a VT_UI4.
$bytes =~ s/(Created by WIDL version [0-9.]+ at ).{24}(\nW*\x13\0)..../$1Thu Jan  1 00:00:00 1970$2\0\0\0\0/s
    or die "$path: no date was found\n";
seek($file, 0, 0) and print {$file} $bytes and close($file) or die "$path: $!\n";
