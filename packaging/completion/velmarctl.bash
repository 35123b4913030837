# bash completion for velmarctl                              -*- shell-script -*-
#
# Commands, each command's options, the edit commands and their words,
# folders after --server-dir and --registry-dir, files after --sql-trace and
# "edit", and user IDs where an edit command takes one. User IDs are read
# from the server folder's SQLite database with sqlite3 when both are there;
# otherwise they are left out.

_velmarctl_userids()
{
    local dir="" i
    for ((i = 1; i < ${#COMP_WORDS[@]}; i++)); do
        case ${COMP_WORDS[i]} in
            --server-dir) dir=${COMP_WORDS[i + 1]} ;;
            --server-dir=*) dir=${COMP_WORDS[i]#--server-dir=} ;;
        esac
    done
    [[ -z $dir ]] && dir=${VELMAR_SERVER_DIR:-}
    dir=${dir/#\~/$HOME}
    local db="$dir/VelmarDB.mdb"
    [[ -n $dir && -f $db ]] || return 0
    type -P sqlite3 &>/dev/null || return 0
    local prefix=${cur//\'/\'\'}
    timeout 2 sqlite3 -readonly -batch -noheader "$db" \
        "SELECT MemberID FROM Member WHERE substr(MemberID, 1, ${#cur}) = '$prefix' ORDER BY MemberID LIMIT 500;" \
        2>/dev/null
}

_velmarctl()
{
    local cur prev words cword
    _init_completion -s || return

    case $prev in
        --server-dir | --registry-dir)
            _filedir -d
            return
            ;;
        --sql-trace)
            _filedir
            return
            ;;
        --table | --map | --bind-dn)
            return
            ;;
        --from | --to | --code | --memo | --smtp | --user)
            return
            ;;
        --security)
            COMPREPLY=($(compgen -W 'none starttls tls' -- "$cur"))
            return
            ;;
        --ca-file)
            _filedir
            return
            ;;
        --format)
            COMPREPLY=($(compgen -W 'tsv json' -- "$cur"))
            return
            ;;
    esac

    # The command's words: everything but the options and their values.
    local args=() i
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --server-dir | --registry-dir | --sql-trace | --from | --to | --format | --code | \
                --table | --map | --bind-dn | \
                --name | --password | --nickname | --email | --mobile | --phone | \
                --office-phone | --address | --birthday | --intro | --memo | --smtp | --security | \
                --user | --ca-file)
                ((i++))
                ;;
            -*) ;;
            *) args+=("${words[i]}") ;;
        esac
    done

    local common="--server-dir --registry-dir --sql-trace --verbose --help --help-all --version"
    local edit_words="member group place unplace membership position permission voip folder right notice"
    local member_options="--name --password --nickname --email --mobile --phone --office-phone
        --address --birthday --intro --male --female --public --private --solar --lunar --admin
        --no-admin"

    if [[ ${#args[@]} -eq 0 ]]; then
        if [[ $cur == -* ]]; then
            COMPREPLY=($(compgen -W "$common" -- "$cur"))
        else
            COMPREPLY=($(compgen -W "load resave recover doctor edit import logs access invite services notify $edit_words" -- "$cur"))
        fi
        return
    fi

    local n=${#args[@]} command=${args[0]}
    local options="$common"
    case $command in
        load) ;;
        resave) options+=" --timings --force --wait" ;;
        recover) options+=" --discard --wait" ;;
        doctor) options+=" --json --fix --wait" ;;
        edit) options+=" --dry-run --timings --force --wait --preview --preview-rows" ;;
        import) options+=" --table --map --skip-refused --bind-dn --dry-run --timings --force --wait --preview --preview-rows" ;;
        logs) options="--from --to --oldest-first --format --server-dir --registry-dir --help" ;;
        access) options="--format --server-dir --registry-dir --verbose --help" ;;
        invite) options+=" --memo --dry-run --smtp --security --from --user --ca-file --wait" ;;
        services) options="--server-dir --verbose --help" ;;
        notify) options="--code --help" ;;
        *) options+=" --dry-run --timings --force --wait --preview --preview-rows" ;;
    esac
    # import's source: csv:FILE and sqlite:FILE complete the file after the
    # prefix; the words are taken again with ':' inside them.
    if [[ $command == import && $cur != -* ]]; then
        local iwords=() icword icur j m=0
        _get_comp_words_by_ref -n : -c icur -w iwords -i icword
        for ((j = 1; j < icword; j++)); do
            case ${iwords[j]} in
                --server-dir | --registry-dir | --sql-trace | --table | --map | --bind-dn | --wait)
                    ((j++))
                    ;;
                -*) ;;
                *) ((m++)) ;;
            esac
        done
        if [[ $m -eq 1 ]]; then
            case $icur in
                csv:* | sqlite:*)
                    local kind=${icur%%:*}
                    cur=${icur#*:}
                    _filedir
                    COMPREPLY=("${COMPREPLY[@]/#/$kind:}")
                    ;;
                *)
                    COMPREPLY=($(compgen -W "csv: sqlite: odbc: ldap:// ldapi://" -- "$icur"))
                    compopt -o nospace 2>/dev/null
                    ;;
            esac
            __ltrim_colon_completions "$icur"
        fi
        return
    fi
    if [[ $cur == -* ]]; then
        case "$command ${args[1]-}" in
            "member add") options+=" --guest $member_options" ;;
            "member set") options+=" $member_options" ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    # The value of a member text option is free text.
    case $prev in
        --name | --password | --nickname | --email | --mobile | --phone | --office-phone | \
            --address | --birthday | --intro)
            return
            ;;
    esac

    local choices=""
    case $command in
        edit) [[ $n -eq 1 ]] && { _filedir; return; } ;;
        logs) [[ $n -eq 1 ]] && choices="chat system user" ;;
        access)
            if [[ $n -eq 1 ]]; then
                choices="member folder"
            elif [[ $n -eq 2 && ${args[1]} == member ]]; then
                choices=$(_velmarctl_userids)
            fi
            ;;
        services) [[ $n -eq 1 ]] && choices="status start stop" ;;
        invite) choices=$(_velmarctl_userids) ;;
        member)
            if [[ $n -eq 1 ]]; then
                choices="add set delete"
            elif [[ ${args[1]} == set || ${args[1]} == delete ]]; then
                [[ ${args[1]} == delete || $n -eq 2 ]] && choices=$(_velmarctl_userids)
            fi
            ;;
        group)
            if [[ $n -eq 1 ]]; then
                choices="add rename delete move"
            elif [[ ${args[1]} == move && $n -eq 3 ]]; then
                choices="up down first last into"
            fi
            ;;
        place) [[ $n -ge 2 ]] && choices=$(_velmarctl_userids) ;;
        unplace) [[ $n -eq 2 ]] && choices=$(_velmarctl_userids) ;;
        membership)
            if [[ $n -eq 1 ]]; then
                choices="position"
            elif [[ $n -eq 3 ]]; then
                choices=$(_velmarctl_userids)
            elif [[ $n -eq 4 ]]; then
                choices="none"
            fi
            ;;
        position)
            if [[ $n -eq 1 ]]; then
                choices="add rename delete default move"
            elif [[ ${args[1]} == move && $n -eq 3 ]]; then
                choices="up down"
            elif [[ ${args[1]} == default && $n -eq 2 ]]; then
                choices="none"
            fi
            ;;
        permission)
            if [[ $n -eq 1 ]]; then
                choices="set"
            elif [[ $n -eq 2 ]]; then
                choices=$(_velmarctl_userids)
            else
                local feature
                for feature in message chat file tts video call sms voip; do
                    choices+=" $feature=on $feature=off"
                done
            fi
            ;;
        voip)
            if [[ $n -eq 1 ]]; then
                choices="set assign"
            elif [[ ${args[1]} == set && $n -eq 2 ]]; then
                choices=$(_velmarctl_userids)
            fi
            ;;
        folder) [[ $n -eq 1 ]] && choices="add remove" ;;
        right)
            case $n in
                1) choices="set" ;;
                3) choices="group member" ;;
                4) [[ ${args[3]} == member ]] && choices=$(_velmarctl_userids) ;;
                5) choices="none read write" ;;
            esac
            ;;
        notice) [[ $n -eq 1 ]] && choices="delete" ;;
    esac
    [[ -n $choices ]] && COMPREPLY=($(compgen -W "$choices" -- "$cur"))
} &&
    complete -F _velmarctl velmarctl

# zsh can use this file as it stands through bashcompinit:
#   autoload -U +X bashcompinit && bashcompinit && source velmarctl
