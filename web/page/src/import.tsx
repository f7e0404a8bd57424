// Import of people: a text or a file, its columns, a try, the run, and what became of it.
import { useEffect, useState } from "preact/hooks";
import { type Import, type Look, beginExport, beginImport, fileOf, findImport, listImports, lookAtImport, sendImportText, stopJob } from "./api";
import { Trouble, sentence, undo } from "./dialogs";
import type { Key } from "./en";
import { suggestGroups } from "./pickers";
import { watchProgress } from "./events";
import { noteChange } from "./place";
import { Table } from "./table";
import { number, t } from "./texts";

const kPart = 100000;
const kPause = 3000;
const fates = ["created", "updated", "unchanged", "exists", "failed"] as const;
const flags = ["update", "clear_empty", "allow_privileges"] as const;
const leaverActions = ["list", "lock", "move", "delete"] as const;
type LeaverAction = (typeof leaverActions)[number];

/** The text of a file: in UTF-8 or UTF-16, or else in what Windows writes in the West. */
async function textOf(file: File): Promise<string> {
    const bytes = new Uint8Array(await file.arrayBuffer());
    const isWide = (bytes[0] === 0xff && bytes[1] === 0xfe) || (bytes[0] === 0xfe && bytes[1] === 0xff);
    if (isWide) {
        return new TextDecoder(bytes[0] === 0xff ? "utf-16le" : "utf-16be").decode(bytes);
    }
    try {
        return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
    } catch {
        return new TextDecoder("windows-1252").decode(bytes);
    }
}

/** What stands between the values of the first line most often. */
function delimiterOf(text: string): string {
    const first = text.slice(0, text.indexOf("\n") + 1 || text.length);
    const count = (delimiter: string) => first.split(delimiter).length;
    return ["\t", ";", ","].reduce((best, other) => (count(other) > count(best) ? other : best), ",");
}

async function send(text: string): Promise<void> {
    for (let begin = 0; begin < text.length || begin === 0; ) {
        let end = Math.min(text.length, begin + kPart);
        // A character of two halves stays whole.
        if (/[\uD800-\uDBFF]/.test(text.charAt(end - 1))) {
            --end;
        }
        await sendImportText(text.slice(begin, Math.max(end, begin + 1)), begin === 0);
        begin = Math.max(end, begin + 1);
    }
}

/** How many leavers something is done about. */
const leftOf = (job: Import) => job.leavers?.done ?? 0;

const guess = (heading: string, known: string[]) =>
    known.find(name => name === heading.trim().toLowerCase().replace(/[\s-]+/g, "_")) ?? "";

/** @param props.action  what is to become of leavers. */
function JobView(props: { job: Import; action: LeaverAction | ""; onStop: () => void; onRun: (() => void) | undefined }) {
    const { job } = props;
    const count = number(job.created + job.updated);
    const left = props.action === "" || props.action === "list" ? 0 : leftOf(job);
    const total = job.total ?? 0;
    const part = total > 0 ? job.done / total : 0;
    return (
        <section class="job" aria-label={t(job.dry_run ? "import.try" : "import.run")}>
            <h2>{t(job.dry_run ? "import.try" : "import.run")}</h2>
            {!job.over && (
                <p>
                    <progress aria-label={t("import.run")} value={part} /> {t("import.progress", { done: job.done, total })}{" "}
                    <button onClick={props.onStop}>{t("import.stop")}</button>
                </p>
            )}
            <div role="status">
                <Trouble text={job.over ? job.error || (job.status === 200 ? "" : t("job.refused")) : ""} />
                {job.over && (
                    <p class="verdict">
                        {fates
                            .filter(fate => job[fate] > 0)
                            .map(fate => t(`import.${fate}`, { count: job[fate] }))
                            .join(" · ") || t("none")}
                    </p>
                )}
                {job.over && job.leavers && (
                    <p class={job.leavers.unreadable > 0 ? "warning" : ""}>
                        {t("import.left", { count: job.leavers.leavers, people: job.leavers.people })}
                        {job.leavers.unreadable > 0 && ` ${t("import.unreadable", { count: job.leavers.unreadable })}`}
                    </p>
                )}
            </div>
            {job.group_count > 0 && (
                <details>
                    <summary>{t("import.groups", { count: job.group_count })}</summary>
                    <ul>
                        {job.groups.map(path => (
                            <li key={path} dir="auto">
                                {path}
                            </li>
                        ))}
                    </ul>
                </details>
            )}
            {job.over && (
                <div class="buttons">
                    {job.done > 0 && <a href={`/api/v1/jobs/report?id=${job.id}`}>{t("import.report")}</a>}
                    {job.failed > 0 && <a href={`/api/v1/jobs/report?failed=1&id=${job.id}`}>{t("import.failedrows")}</a>}
                    {!job.dry_run && job.entry !== null && (
                        <button class="danger" onClick={() => void undo(job.entry as number)}>
                            {t("import.undo")}
                        </button>
                    )}
                    {props.onRun && (
                        <button class="main" onClick={props.onRun}>
                            {left > 0
                                ? t(`import.go.${props.action as "lock" | "move" | "delete"}`, { count, left })
                                : t("import.go", { count })}
                        </button>
                    )}
                </div>
            )}
            {job.over && job.leaver_rows && job.leaver_rows.length > 0 && (
                <>
                    <h3>{t("import.leftlist")}</h3>
                    <Table label={t("import.leftlist")} columns={["login", "id", "outcome", "reason"]} rows={job.leaver_rows} />
                </>
            )}
            {job.failed_rows && job.failed_rows.length > 0 && (
                <>
                    <h3>{t("import.failed", { count: job.failed })}</h3>
                    <Table label={t("import.failedrows")} columns={["line", "login", "reason"]} rows={job.failed_rows} />
                </>
            )}
            {job.over && job.rows && job.rows.length > 0 && (
                <>
                    <h3>{t("import.shown")}</h3>
                    <Table label={t("import.shown")} columns={["line", "login", "outcome", "reason"]} rows={job.rows} />
                </>
            )}
        </section>
    );
}

const formats = ["csv", "json", "ldif"] as const;

/** Has the directory, or a part of it, written to a file, which the jobs offer once it is there. */
function ExportForm() {
    const [format, setFormat] = useState("csv");
    const [place, setPlace] = useState("");
    const [places, setPlaces] = useState<string[]>([]);
    const [trouble, setTrouble] = useState("");
    const [file, setFile] = useState<number>();
    const begin = async () => {
        setTrouble("");
        setFile(undefined);
        try {
            const { job } = await beginExport({ format, ...(place ? { in: place } : {}) });
            setFile(await fileOf(job.id));
        } catch (error) {
            setTrouble(sentence(error));
        }
    };
    return (
        <form
            aria-label={t("export")}
            onSubmit={event => {
                event.preventDefault();
                void begin();
            }}
        >
            <h2>{t("export")}</h2>
            <Trouble text={trouble} />
            <div class="bar">
                <label>
                    {t("export.format")}{" "}
                    <select value={format} onChange={event => setFormat(event.currentTarget.value)}>
                        {formats.map(name => (
                            <option key={name} value={name}>
                                {t(`export.${name}`)}
                            </option>
                        ))}
                    </select>
                </label>
                <label>
                    {t("export.in")}{" "}
                    <input
                        dir="auto"
                        list="export-places"
                        value={place}
                        onInput={event => {
                            const text = event.currentTarget.value;
                            setPlace(text);
                            suggestGroups(text).then(setPlaces, () => setPlaces([]));
                        }}
                    />
                </label>
                <datalist id="export-places">
                    {places.map(path => (
                        <option key={path} value={path} />
                    ))}
                </datalist>
                <button>{t("export")}</button>
            </div>
            <p role="status">{file !== undefined && <a href={`/api/v1/jobs/file?id=${file}`}>{t("job.file")}</a>}</p>
        </form>
    );
}

/** A path of a view or group. */
function GroupField(props: {
    label: string;
    value: string;
    onInput: (text: string) => void;
    onGroups: (paths: string[]) => void;
}) {
    return (
        <label>
            {props.label}{" "}
            <input
                dir="auto"
                list="import-groups"
                value={props.value}
                onInput={event => {
                    const text = event.currentTarget.value;
                    props.onInput(text);
                    suggestGroups(text).then(props.onGroups, () => props.onGroups([]));
                }}
            />
        </label>
    );
}

export function ImportPage() {
    const [text, setText] = useState("");
    const [delimiter, setDelimiter] = useState(",");
    const [look, setLook] = useState<Look>();
    const [columns, setColumns] = useState<string[]>([]);
    const [options, setOptions] = useState<Record<string, boolean>>({});
    const [departments, setDepartments] = useState("");
    const [dateFormat, setDateFormat] = useState("");
    const [isWhole, setWhole] = useState(false);
    const [scope, setScope] = useState("");
    const [action, setAction] = useState<LeaverAction>("list");
    const [target, setTarget] = useState("");
    const [most, setMost] = useState("");
    const [groups, setGroups] = useState<string[]>([]);
    const [views, setViews] = useState<string[]>([]);
    const [job, setJob] = useState<Import>();
    const [trouble, setTrouble] = useState("");
    const say = (error: unknown) => setTrouble(sentence(error));

    // An import that runs already, begun here or elsewhere, is shown.
    useEffect(() => {
        listImports().then(all => all[0] && !all[0].over && setJob(all[0]), say);
        suggestGroups("").then(paths => setViews(paths.filter(path => path.lastIndexOf("/") === 0)), () => {});
    }, []);
    useEffect(() => {
        if (!job || (job.over && job.rows)) {
            return;
        }
        const ask = () =>
            findImport(job.id).then(setJob, say);
        // The server says when it is further; a window that does not hear it looks from time to time.
        const timer = setTimeout(ask, job.over ? 0 : kPause);
        const end = watchProgress(ask);
        return () => {
            clearTimeout(timer);
            end();
        };
    }, [job]);

    useEffect(() => {
        if (job?.over && !job.dry_run) {
            noteChange();
        }
    }, [job?.id, job?.over]);

    const read = async (given: string, between: string) => {
        try {
            setTrouble("");
            setJob(undefined);
            setDelimiter(between);
            await send(given.replace(/^\uFEFF/, "").replace(/^[\r\n]+/, ""));
            const found = await lookAtImport(between);
            setLook(found);
            setColumns(found.columns.map(heading => guess(heading, found.known)));
        } catch (error) {
            setLook(undefined);
            say(error);
        }
    };
    const begin = async (isTry: boolean) => {
        try {
            setTrouble("");
            setJob(
                await beginImport({
                    delimiter,
                    columns: columns.map(column => column || null),
                    dry_run: isTry,
                    ...options,
                    ...(departments ? { departments } : {}),
                    ...(departments && options["make_view"] ? { make_view: true } : {}),
                    ...(dateFormat ? { date_format: dateFormat } : {}),
                    ...(isWhole
                        ? {
                              sync: true,
                              scope,
                              leavers: action === "move" ? `move:${target}` : action,
                              ...(most ? { max_leavers: most } : {}),
                              ...(isTry || !job?.leavers ? {} : { agreed: job.leavers.digest }),
                          }
                        : {}),
                }),
            );
        } catch (error) {
            say(error);
        }
    };
    const changed = () => setJob(undefined);
    /** Takes what is entered; what was tried before says nothing any more. */
    const given =
        <T,>(set: (value: T) => void) =>
        (value: T) => {
            changed();
            set(value);
        };

    return (
        <div class="page import">
            <h1>{t("area.import")}</h1>
            <Trouble text={trouble} />
            <form
                onSubmit={event => {
                    event.preventDefault();
                    void read(text, delimiterOf(text));
                }}
            >
                <div class="field">
                    <label for="import-file">{t("import.file")}</label>
                    <input
                        id="import-file"
                        type="file"
                        accept=".csv,.txt,.tsv,text/csv,text/plain"
                        onChange={async event => {
                            const [file] = event.currentTarget.files ?? [];
                            if (file) {
                                const found = await textOf(file);
                                setText("");
                                await read(found, delimiterOf(found));
                            }
                        }}
                    />
                </div>
                <div class="field">
                    <label for="import-text">{t("import.paste")}</label>
                    <textarea id="import-text" dir="auto" rows={6} value={text} onInput={event => setText(event.currentTarget.value)} />
                </div>
                <div class="buttons">
                    <button class={look ? "" : "main"} disabled={text.trim() === ""}>
                        {t("import.read")}
                    </button>
                </div>
            </form>
            {look && (
                <section>
                    <h2>{t("import.columns")}</h2>
                    <p>{t("import.rows", { count: look.rows })}</p>
                    <div class="table" role="region" aria-label={t("import.columns")} tabIndex={0}>
                        <table>
                            <thead>
                                <tr>
                                    {look.columns.map((heading, i) => (
                                        <th key={i} scope="col">
                                            <bdi>{heading}</bdi>
                                            <select
                                                aria-label={t("import.column", { name: heading })}
                                                value={columns[i] ?? ""}
                                                onChange={event => given(setColumns)(columns.map((one, j) => (j === i ? event.currentTarget.value : one)))}
                                            >
                                                <option value="">{t("import.leaveout")}</option>
                                                {look.known.map(name => (
                                                    <option key={name}>{name}</option>
                                                ))}
                                            </select>
                                        </th>
                                    ))}
                                </tr>
                            </thead>
                            <tbody>
                                {look.sample.map((row, i) => (
                                    <tr key={i}>
                                        {look.columns.map((_, j) => (
                                            <td key={j} dir="auto">
                                                {row[j] ?? ""}
                                            </td>
                                        ))}
                                    </tr>
                                ))}
                            </tbody>
                        </table>
                    </div>
                    <div class="bar">
                        {flags.map(flag => (
                            <label key={flag}>
                                <input
                                    type="checkbox"
                                    checked={(isWhole && flag === "update") || (options[flag] ?? false)}
                                    disabled={isWhole && flag === "update"}
                                    onChange={event => given(setOptions)({ ...options, [flag]: event.currentTarget.checked })}
                                />
                                {t(`import.${flag}` as Key)}
                            </label>
                        ))}
                    </div>
                    <div class="bar">
                        <label>
                            {t("import.departments")}{" "}
                            <input
                                dir="auto"
                                list="import-views"
                                value={departments}
                                onInput={event => given(setDepartments)(event.currentTarget.value)}
                            />
                        </label>
                        <datalist id="import-views">
                            {views.map(view => (
                                <option key={view} value={view} />
                            ))}
                        </datalist>
                        <label>
                            <input
                                type="checkbox"
                                checked={options["make_view"] ?? false}
                                disabled={!departments}
                                onChange={event => given(setOptions)({ ...options, make_view: event.currentTarget.checked })}
                            />
                            {t("import.make_view")}
                        </label>
                        <label>
                            {t("import.dates")}{" "}
                            <input
                                placeholder="YYYY-MM-DD"
                                value={dateFormat}
                                onInput={event => given(setDateFormat)(event.currentTarget.value)}
                            />
                        </label>
                    </div>
                    <div class="bar">
                        <label>
                            <input
                                type="checkbox"
                                checked={isWhole}
                                onChange={event => given(setWhole)(event.currentTarget.checked)}
                            />
                            {t("import.sync")}
                        </label>
                        {isWhole && (
                            <>
                                <GroupField label={t("import.scope")} value={scope} onInput={given(setScope)} onGroups={setGroups} />
                                <label>
                                    {t("import.leavers")}{" "}
                                    <select
                                        value={action}
                                        onChange={event => given(setAction)(event.currentTarget.value as LeaverAction)}
                                    >
                                        {leaverActions.map(name => (
                                            <option key={name} value={name}>
                                                {t(`import.leavers.${name}`)}
                                            </option>
                                        ))}
                                    </select>
                                </label>
                                {action === "move" && (
                                    <GroupField label={t("import.target")} value={target} onInput={given(setTarget)} onGroups={setGroups} />
                                )}
                                {action !== "list" && (
                                    <label>
                                        {t("import.most")}{" "}
                                        <input placeholder="5%" value={most} onInput={event => given(setMost)(event.currentTarget.value)} />
                                    </label>
                                )}
                            </>
                        )}
                        <datalist id="import-groups">
                            {groups.map(path => (
                                <option key={path} value={path} />
                            ))}
                        </datalist>
                    </div>
                    <div class="buttons">
                        <button
                            class={job ? "" : "main"}
                            disabled={
                                !columns.includes("login") ||
                                job?.over === false ||
                                (isWhole && (scope.trim() === "" || (action === "move" && target.trim() === "")))
                            }
                            onClick={() => void begin(true)}>
                            {t("import.tryit")}
                        </button>
                    </div>
                </section>
            )}
            {job && (
                <JobView
                    job={job}
                    action={isWhole && look ? action : ""}
                    onStop={() => stopJob(job.id).catch(say)}
                    onRun={
                        look && job.dry_run && job.over && !job.error && job.created + job.updated + (action === "list" ? 0 : leftOf(job)) > 0
                            ? () => void begin(false)
                            : undefined
                    }
                />
            )}
            <ExportForm />
        </div>
    );
}
