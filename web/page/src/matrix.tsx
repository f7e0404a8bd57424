// Rights of roles side by side, edited and saved as one change.
import { useEffect, useState } from "preact/hooks";
import { whileAsked } from "./answers";
import { type Row, may, run } from "./api";
import { Trouble, change, confirmed, sentence } from "./dialogs";
import { addGuard, useChanges } from "./place";
import { t, words } from "./texts";

const kMostRows = 300;

interface Role {
    id: number;
    name: string;
}
/** The powers of one function by the roles' ids; "" for none, "1,4" for several rows. */
interface Line {
    genre: string;
    function: string;
    powers: Record<number, string>;
}

const keyOf = (role: Role, line: Line) => JSON.stringify([role.id, line.genre, line.function]);
const escaped = (name: string) => name.replace(/[\\/]/g, "\\$&");

async function load(roles: Role[]): Promise<Line[]> {
    if (roles.length === 0) {
        return [];
    }
    const answer = await run("right/matrix", { ROLE: roles.map(role => `id:${role.id}`) });
    const columns = (answer.columns ?? []).slice(2);
    return (answer.rows ?? []).map((row: Row) => ({
        genre: String(row["genre"]),
        function: String(row["function"]),
        powers: Object.fromEntries(roles.map((role, i) => [role.id, String(row[columns[i] as string] ?? "")])),
    }));
}

export function Matrix() {
    const changes = useChanges();
    const [roles, setRoles] = useState<Role[]>([]);
    const [chosen, setChosen] = useState<ReadonlySet<number>>(new Set());
    /** A role's column is shown once its rights have been loaded. */
    const [{ roles: shownRoles, lines }, setLoaded] = useState<{ roles: Role[]; lines: Line[] }>({ roles: [], lines: [] });
    const [added, setAdded] = useState<Line[]>([]);
    const [edits, setEdits] = useState<Record<string, string>>({});
    const [filter, setFilter] = useState("");
    const [onlyDifferent, setOnlyDifferent] = useState(false);
    const [fresh, setFresh] = useState({ genre: "", function: "" });
    const [trouble, setTrouble] = useState("");

    useEffect(() => {
        run("role/list", {}).then(
            answer => {
                const found = (answer.rows ?? []).map(row => ({ id: Number(row["id"]), name: String(row["name"]) }));
                setRoles(found);
                setChosen(before => (before.size > 0 ? before : new Set(found.slice(0, 5).map(role => role.id))));
            },
            error => setTrouble(sentence(error)),
        );
    }, [changes]);
    const wantedRoles = roles.filter(role => chosen.has(role.id));
    useEffect(
        () =>
            whileAsked(
                load(wantedRoles),
                found => {
                    setLoaded({ roles: wantedRoles, lines: found });
                    setTrouble("");
                },
                error => setTrouble(sentence(error)),
            ),
        [JSON.stringify(wantedRoles), changes],
    );

    const count = Object.keys(edits).length;
    useEffect(() => {
        if (count === 0) {
            return;
        }
        return addGuard(() => confirmed(t("leave"), t("drop")));
    }, [count > 0]);

    const all = [...lines, ...added.filter(one => !lines.some(line => line.genre === one.genre && line.function === one.function))];
    const wanted = filter.toLowerCase();
    const isDifferent = (line: Line) => new Set(shownRoles.map(role => line.powers[role.id] ?? "")).size > 1;
    const fitting = all.filter(
        line =>
            `${line.genre} ${line.function}`.toLowerCase().includes(wanted) &&
            (!onlyDifferent || isDifferent(line) || shownRoles.some(role => keyOf(role, line) in edits)),
    );
    const edit = (role: Role, line: Line, text: string) =>
        setEdits(before => {
            const { [keyOf(role, line)]: _, ...others } = before;
            return text === (line.powers[role.id] ?? "") ? others : { ...others, [keyOf(role, line)]: text };
        });
    const drop = () => {
        setEdits({});
        setAdded([]);
        setTrouble("");
    };
    const save = async () => {
        const texts = Object.entries(edits).map(([key, text]) => {
            const [id, genre, name] = JSON.parse(key) as [number, string, string];
            return `/id:${id}/${escaped(genre)}/${escaped(name)}=${text.trim() || "none"}`;
        });
        try {
            if (await change("right/edit", { EDIT: texts })) {
                drop();
            }
        } catch (error) {
            setTrouble(sentence(error));
        }
    };

    return (
        <section
            class="matrix"
            onKeyDown={event => {
                if (event.key === "s" && (event.ctrlKey || event.metaKey) && count > 0) {
                    event.preventDefault();
                    void save();
                }
            }}
        >
            <fieldset class="choices">
                <legend>{t("area.roles")}</legend>
                {roles.map(role => (
                    <label key={role.id}>
                        <input
                            type="checkbox"
                            checked={chosen.has(role.id)}
                            onChange={event => {
                                const after = new Set(chosen);
                                event.currentTarget.checked ? after.add(role.id) : after.delete(role.id);
                                setChosen(after);
                            }}
                        />
                        <bdi>{role.name}</bdi>
                    </label>
                ))}
            </fieldset>
            <div class="bar">
                <input
                    type="search"
                    dir="auto"
                    aria-label={t("matrix.filter")}
                    placeholder={t("matrix.filter")}
                    value={filter}
                    onInput={event => setFilter(event.currentTarget.value)}
                />
                <label>
                    <input
                        type="checkbox"
                        checked={onlyDifferent}
                        onChange={event => setOnlyDifferent(event.currentTarget.checked)}
                    />
                    {t("matrix.different")}
                </label>
            </div>
            <form
                class="bar"
                onSubmit={event => {
                    event.preventDefault();
                    setAdded([...added, { ...fresh, powers: {} }]);
                    setFresh({ genre: "", function: "" });
                }}
            >
                {(["genre", "function"] as const).map(name => (
                    <input
                        key={name}
                        dir="auto"
                        required
                        aria-label={t(`why.${name}`)}
                        placeholder={t(`why.${name}`)}
                        value={fresh[name]}
                        onInput={event => setFresh({ ...fresh, [name]: event.currentTarget.value })}
                    />
                ))}
                <button>{t("matrix.add")}</button>
            </form>
            <Trouble text={trouble} />
            <p class="muted">{t("matrix.help")}</p>
            <div class="table" role="region" aria-label={t("matrix.title")} tabIndex={0}>
                <table>
                    <thead>
                        <tr>
                            <th scope="col">{words("genre")}</th>
                            <th scope="col">{words("function")}</th>
                            {shownRoles.map(role => (
                                <th key={role.id} scope="col">
                                    <bdi>{role.name}</bdi>
                                </th>
                            ))}
                        </tr>
                    </thead>
                    <tbody>
                        {fitting.slice(0, kMostRows).map(line => (
                            <tr key={JSON.stringify([line.genre, line.function])}>
                                <td dir="auto">{line.genre}</td>
                                <th scope="row" dir="auto">
                                    {line.function}
                                </th>
                                {shownRoles.map(role => {
                                    const key = keyOf(role, line);
                                    const label = t("matrix.cell", { role: role.name, function: `${line.genre} ${line.function}` });
                                    return (
                                        <td key={role.id}>
                                            <input
                                                class={`power${key in edits ? " changed" : ""}`}
                                                aria-label={label}
                                                readOnly={!may("right/edit")}
                                                value={edits[key] ?? line.powers[role.id] ?? ""}
                                                onInput={event => edit(role, line, event.currentTarget.value)}
                                            />
                                        </td>
                                    );
                                })}
                            </tr>
                        ))}
                    </tbody>
                </table>
            </div>
            {fitting.length === 0 && <p class="empty">{t("none")}</p>}
            {fitting.length > kMostRows && <p>{t("generic.cut", { count: kMostRows })}</p>}
            {may("right/edit") && <div class="buttons">
                <span role="status">{count > 0 ? t("matrix.changed", { count }) : ""}</span>
                <button disabled={count === 0} onClick={drop}>
                    {t("discard")}
                </button>
                <button class="main" disabled={count === 0} onClick={() => void save()}>
                    {t("save")}
                </button>
            </div>}
        </section>
    );
}
