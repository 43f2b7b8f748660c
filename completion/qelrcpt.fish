# fish completion for qelrcpt(1): the command itself tells what its options and their words are.

function __qelrcpt_words --argument-names option
    # The blocks to choose from depend on the form.
    set -l form (string match --regex --groups-only -- '--form[= ](\S+) ' (commandline -cp))[-1]
    test -n "$form"; and set form --form $form
    qelrcpt $form --list-options 2>/dev/null |
        string match -- "$option|*" | string split --fields 3 '|' | string split --no-empty ' '
end

function __qelrcpt_zones
    string match --regex --groups-only -- '^[^#\t]+\t[^\t]+\t([^\t]+)' </usr/share/zoneinfo/zone1970.tab
end

for line in (qelrcpt --list-options 2>/dev/null)
    set -l fields (string split --max 3 '|' -- $line)
    set -l name (string replace --regex '^--?' '' -- $fields[1])
    set -l kind -s
    string match --quiet -- '--*' $fields[1]; and set kind -l
    switch $fields[2]
        case ''
            complete -c qelrcpt $kind $name -d $fields[4]
        case FILE
            complete -c qelrcpt $kind $name -r -F -d $fields[4]
        case ZONE
            complete -c qelrcpt $kind $name -x -a '(__qelrcpt_zones)' -d $fields[4]
        case '*'
            complete -c qelrcpt $kind $name -x -a "(__qelrcpt_words $fields[1])" -d $fields[4]
    end
end
