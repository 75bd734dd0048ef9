# Completions of kruteinctl for fish.

# The connected devices; nothing where there is no device daemon.
function __kruteinctl_udids
    kruteinctl devices --timeout 2 --json 2>/dev/null |
        string replace -rf '^\{"message_type":"device","udid":"([^"]*)".*' '$1'
end

function __kruteinctl_after
    __fish_seen_subcommand_from $argv
end

complete -c kruteinctl -f
complete -c kruteinctl -s h -l help -d 'Print the help'
complete -c kruteinctl -n __fish_use_subcommand -l version -d 'Print the version'

complete -c kruteinctl -n __fish_use_subcommand -a backup -d 'Make a backup of a device'
complete -c kruteinctl -n __fish_use_subcommand -a restore -d 'Restore a device from a backup'
complete -c kruteinctl -n __fish_use_subcommand -a size -d 'Tell the size of a backup'
complete -c kruteinctl -n __fish_use_subcommand -a list -d 'List the backups below a folder'
complete -c kruteinctl -n __fish_use_subcommand -a files -d 'List what a backup\'s catalogue lists'
complete -c kruteinctl -n __fish_use_subcommand -a verify -d 'Check a backup\'s files and app databases'
complete -c kruteinctl -n __fish_use_subcommand -a show -d 'Show a backup\'s record and what it keeps'
complete -c kruteinctl -n __fish_use_subcommand -a devices -d 'List the connected devices'
complete -c kruteinctl -n __fish_use_subcommand -a info -d 'Tell what a connected device says of itself'

complete -c kruteinctl -n '__kruteinctl_after backup restore size info' -a '(__kruteinctl_udids)' -d Device
complete -c kruteinctl -n '__kruteinctl_after list verify show' -a '(__fish_complete_directories)'
complete -c kruteinctl -n '__kruteinctl_after files' -F

complete -c kruteinctl -n 'not __fish_use_subcommand' -l json -d 'Print one JSON object a line'
complete -c kruteinctl -n '__kruteinctl_after backup restore size verify' -s q -l quiet -d 'Print nothing but errors'
complete -c kruteinctl -n '__kruteinctl_after backup' -l to -x -a '(__fish_complete_directories)' -d 'Folder for the backup'
complete -c kruteinctl -n '__kruteinctl_after backup' -l types -x -a '(__fish_complete_list , "printf %s\\\\n messages whatsapp wechat contacts full")' -d 'Keep only the data of these apps'
complete -c kruteinctl -n '__kruteinctl_after backup' -l keep-failed -d 'Leave what a failed typed backup has made'
complete -c kruteinctl -n '__kruteinctl_after backup' -l dry-run -d 'Tell which files would be kept'
complete -c kruteinctl -n '__kruteinctl_after backup restore size' -l from -x -a '(__fish_complete_directories)' -d 'Folder with backups, or one backup'
complete -c kruteinctl -n '__kruteinctl_after restore' -l force -d 'Restore also from a backup of single apps'
complete -c kruteinctl -n '__kruteinctl_after files' -l domain -x -d 'Only entries with this in their domain'
complete -c kruteinctl -n '__kruteinctl_after files' -l path -x -d 'Only entries with this in their path'
complete -c kruteinctl -n '__kruteinctl_after devices' -l watch -d 'Tell each device that comes or goes'
complete -c kruteinctl -n '__kruteinctl_after devices info' -l timeout -x -d 'Seconds to wait for a device at most'
