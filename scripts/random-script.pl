#!/usr/bin/env perl
# Makes a script of random commands for scripts/compare.sh.
#   scripts/random-script.pl SEED SHEET SCRIPT DRIVE
# Follows SHEET, the host's program, over a copy of drive C: in the folder DRIVE, to see what can be pressed
# and picked. What it merges lies beside SCRIPT. The same seed gives the same script.
use strict;
use warnings;
use utf8;
use open qw(:std :utf8);
use IPC::Open2;

binmode $_, ':utf8' for \*STDOUT;
my ($seed, $sheet, $path, $drive) = @ARGV;
srand $seed;

sub one_of { return $_[rand @_] }

# Samples whose adapters have a VLAN tab come more often. An export's own processors can't be replaced.
my @samples = (grep({ !/plain-export/ } sort glob 'samples/*.reg'),
    map { ("samples/$_.reg") x 4 } qw(workstation two-port-ethernet team-with-vlans));
my $sample = one_of(@samples);
my ($from, $to, $pid, $script);

# ask LINE: what the program prints to it; undefined when it has ended. help, whose last line is known, shows
# where that ends.
sub ask {
    my @lines;
    print {$to} "$_[0]\nhelp\n";
    $to->flush;
    while (defined(my $line = <$from>)) {
        chomp $line;
        return grep { !/^  [a-z]/ } @lines if $line =~ /^  quit  /;
        push @lines, $line;
    }
    return undef;
}

sub start {
    $pid = open2($from, $to, $sheet, $sample, @_, '--files', $drive, '--script', '-');
    binmode $_, ':utf8' for $from, $to;
}

sub stop {
    close $to;
    close $from;
    waitpid $pid, 0;
}

# The fields of a line of a list.
sub fields {
    my @fields = split / \| /, $_[0], -1;
    s/\\([\\|])/$1/g for @fields;
    return @fields;
}

# give COMMAND: puts it into the script. False when the program has ended.
sub give {
    print {$script} "$_[0]\n";
    my @lines = ask($_[0]);
    return !(@lines == 1 && !defined $lines[0]);
}

my $merged = 0;
sub merge {
    my $file = $path =~ s/\.txt$/'-' . ++$merged . '.reg'/er;
    open my $reg, '>:utf8', $file or die "$file: $!";
    print {$reg} "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn\\$_[0]]\n$_[1]\n";
    close $reg;
    return "merge $file";
}

my @adapters;
sub link_change {
    return 'network' unless @adapters;
    return merge('Interfaces\\' . one_of(@adapters), '"Up"=dword:' . int rand 2);
}

sub lock_change {
    my $for = one_of(0, 2500, 4000, 11_000, 20_000);
    return merge('NetCfg', one_of(
        sprintf(qq("LockedBy"="Another Program"\n"LockedFor"=dword:%08x), $for), '"LockedBy"=-',
        sprintf('"TakenFor"=dword:%08x', one_of(0, 1000, 8000)), '"LockedBy"="Ein Ändern"'));
}

my @texts = ('', 0, 1, 2, 7, 10, 20, 100, 4094, 4095, 65537, -1, '1x', ' 5', 'Voice', 'voice', 'Büro 3',
    'x' x 99, 'y' x 120, 'a|b\\c', '語', '%s', '&Save');
my @passive = ('changes', 'changes undo', 'network', 'network list', 'output', 'show', 'places', 'placement', 'log',
    'reg SYSTEM\CurrentControlSet\Services\MUXP\Parameters', 'reg SOFTWARE\StandIn\Restarts');
my %frames = map { $_ => 1 } 1089, 1097;  # group boxes, which can't be pressed
my $time = 0;

sub wait_a_while {
    my $ms = one_of(10, 500, 1000, 3000, 5000, 12_000);
    $time += $ms;
    return "wait $ms";
}

# choose CONTROLS: a command that fits them.
sub choose {
    my @usable = grep { $_->[4] =~ /^shown,enabled/ } grep { $_->[0] eq 'control' && $_->[1] ne '-' } @_;
    my %usable = map { $_->[1] => 1 } @usable;
    my @buttons = map { $_->[1] } grep { $_->[2] eq 'Button' && !$frames{$_->[1]} } @usable;
    my @entries = grep { $usable{$_->[1]} && $_->[2] ne '' && $_->[2] !~ /\\n/ } grep { $_->[0] eq 'entry' } @_;
    my @rows = grep { $usable{$_->[1]} && $_->[2] ne '' && $_->[2] !~ /\\n/ } grep { $_->[0] eq 'row' } @_;
    my @edits = map { $_->[1] } grep { $_->[2] eq 'Edit' } @usable;
    my %answers = (1 => 'ok', 2 => 'cancel', 6 => 'yes', 7 => 'no');
    if (@buttons && !grep { !$answers{$_} } @buttons) {
        return one_of('show', wait_a_while(), link_change()) if rand() < 0.3;
        return 'box ' . $answers{one_of(@buttons)};
    }
    my $in_dialog = grep { $_->[2] eq 'Edit' } @_;
    my @ways = (
        [@buttons ? 8 : 0, sub { 'press ' . one_of(@buttons) }],
        [@edits ? 5 : 0, sub { 'type ' . one_of(@edits) . ' ' . one_of(@texts) }],
        [@edits ? 5 : 0, sub { "type $edits[-1] " . (1 + int rand 30) }],
        [@entries ? 4 : 0, sub { my $entry = one_of(@entries); "select $entry->[1] $entry->[2]" }],
        [@rows ? 5 : 0, sub { my $row = one_of(@rows); "row $row->[1] $row->[2]" }],
        [2, sub { 'answer ' . one_of(qw(ok cancel yes no hold)) }],
        [1, sub { 'save-as ' . one_of('cancel', 'C:\report.txt', 'C:\report.log', 'C:\Program Files\Corvanta\r.txt') }],
        [1, \&wait_a_while],
        [1, \&link_change],
        [1, \&lock_change],
        [1, sub { my $at = $time + int rand 9000; "at $at " . one_of(link_change(), lock_change(), 'controls', 'network list') }],
        [2, sub { one_of(@passive) }],
        [0.3, sub { 'press ' . one_of('enter', 'escape') }],
        [$in_dialog ? 0 : 2, sub { my @tabs = ask('tabs'); 'open ' . one_of(@tabs) }],
        [$in_dialog ? 0 : 1, sub { one_of('apply', 'apply', 'ok', 'cancel') }],
        [$in_dialog ? 0 : 0.5, sub { my @ids = map { (fields($_))[1] } ask('devices'); 'device ' . one_of(@ids) }],
    );
    my $sum = 0;
    $sum += $_->[0] for @ways;
    my $at = rand $sum;
    for my $way (@ways) {
        return $way->[1]->() if ($at -= $way->[0]) < 0;
    }
}

start();
my $device = one_of(map { ($_) x (/^(TSR4|ROOT)/ ? 4 : 1) } map { (fields($_))[1] } ask('devices'));
@adapters = map { (fields($_))[1] } grep { /^adapter/ } ask('network list');
stop();
open $script, '>:utf8', $path or die "$path: $!";
print {$script} "# seed $seed\n#     sheet $sample --device \"$device\" --script $path\n";
start('--device', $device);
my @tabs = ask('tabs');
give('tabs');
give('open ' . one_of(@tabs, grep { $_ eq 'VLAN' } @tabs)) if @tabs && defined $tabs[0];
my $goes_on = 1;
for (1 .. 10 + int rand 25) {
    my @now = ask('tabs');
    last unless @now && defined $now[0];
    my @controls = map { [fields($_)] } ask('controls');
    last unless @controls && defined $controls[0][0];
    $goes_on = give(choose(@controls)) && (rand() < 0.4 || give('controls'));
    last unless $goes_on;
}
if ($goes_on) {
    give($_) for 'network list', 'changes', 'output', 'reg SOFTWARE\StandIn\Restarts';
}
close $script;
stop();
