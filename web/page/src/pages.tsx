// Overview, Why and Audit.
import { useEffect, useState } from "preact/hooks";
import { useAnswer } from "./answers";
import { type Row, findProblems, may, overview } from "./api";
import { Trouble, changeOrSay, sentence, undo } from "./dialogs";
import { AnswerView } from "./generic";
import { type Where, go, useChanges } from "./place";
import { RecordView, Table, shown } from "./table";
import { retold, t, time } from "./texts";

/** Of people, who need somebody to look after them. */
const attention = ["no_group", "plain_password", "no_password"] as const;

export function Overview() {
    const changes = useChanges();
    const [row, setRow] = useState<Row>();
    const [trouble, setTrouble] = useState("");
    useEffect(() => {
        overview().then(
            found => {
                setRow(found);
                setTrouble("");
            },
            error => setTrouble(sentence(error)),
        );
    }, [changes]);
    const [problems, setProblems] = useState<Row[]>();
    const link = (path: string, query: Record<string, string>, key: string, title: string) => (
        <a
            class="tile"
            href={`${path}?${new URLSearchParams(query)}`}
            onClick={event => {
                event.preventDefault();
                void go(path, query);
            }}
        >
            <span class="big">{shown(key, row?.[key])}</span> {title}
        </a>
    );
    return (
        <div class="page">
            <h1>{t("overview.title")}</h1>
            <Trouble text={trouble} />
            {row && (
                <>
                    <div class="tiles">
                        {link("/directory", {}, "users", t("overview.users"))}
                        {link("/directory", { locked: "1" }, "locked", t("trait.locked"))}
                        {link("/directory", { super: "1" }, "super", t("trait.super"))}
                        {link("/directory", {}, "groups", t("overview.groups"))}
                        {link("/more", { noun: "view" }, "views", t("overview.views"))}
                    </div>
                    <h2>{t("overview.attention")}</h2>
                    <ul>
                        {attention
                            .filter(trait => Number(row[trait]) > 0)
                            .map(trait => (
                                <li key={trait}>
                                    <a
                                        href={`/directory?${trait}=1`}
                                        onClick={event => {
                                            event.preventDefault();
                                            void go("/directory", { [trait]: "1" });
                                        }}
                                    >
                                        {t(`trait.${trait}`)}: {shown(trait, row[trait])}
                                    </a>
                                </li>
                            ))}
                        {Number(row["nowhere"]) > 0 && (
                            <li>
                                {t("nowhere")}: {shown("nowhere", row["nowhere"])}
                            </li>
                        )}
                        {[...attention, "nowhere"].every(name => row[name] === 0) && <li>{t("none")}</li>}
                    </ul>
                    <div class="bar">
                        <button onClick={() => findProblems().then(setProblems, error => setTrouble(sentence(error)))}>
                            {t("overview.check")}
                        </button>
                    </div>
                    <div role="status">
                        {problems && (
                            <Table label={t("overview.check")} columns={["count", "problem", "example", "repair"]} rows={problems.map(row => ({ ...row, repair: retold(String(row["repair"])) }))} />
                        )}
                    </div>
                    {problems && problems.length > 0 && may("db/check") && (
                        <div class="bar">
                            <button
                                onClick={async () => {
                                    if (await changeOrSay("db/check", { fix: true })) {
                                        setProblems(await findProblems());
                                    }
                                }}
                            >
                                {t("overview.mend")}
                            </button>
                        </div>
                    )}
                    <p class="muted">
                        {t("overview.engine")}: <bdi>{row["engine"]}</bdi> · {t("overview.asof", { time: time(String(row["as_of"])) })}
                    </p>
                </>
            )}
        </div>
    );
}

export function Why(props: { where: Where }) {
    const { query } = props.where;
    const [values, setValues] = useState({ user: query["user"] ?? "", genre: query["genre"] ?? "", function: query["function"] ?? "" });
    const { user = "", genre = "", function: named = "" } = query;
    const { answer, trouble } = useAnswer(user && genre && named ? "right/explain" : undefined, {
        USER: user,
        GENRE: genre,
        FUNCTION: named,
    });
    return (
        <div class="page">
            <h1>{t("why.title")}</h1>
            <form
                class="inline"
                onSubmit={event => {
                    event.preventDefault();
                    void go("/why", values);
                }}
            >
                {(["user", "genre", "function"] as const).map(name => (
                    <div class="field" key={name}>
                        <label for={`why-${name}`}>{t(`why.${name}`)}</label>
                        <input
                            id={`why-${name}`}
                            dir="auto"
                            required
                            value={values[name]}
                            onInput={event => setValues({ ...values, [name]: event.currentTarget.value })}
                        />
                    </div>
                ))}
                <button class="main">{t("why.ask")}</button>
            </form>
            <Trouble text={trouble} />
            <div role="status">{answer && <AnswerView command={undefined} answer={answer} />}</div>
        </div>
    );
}

const kMostEntries = 500;

export function Audit(props: { where: Where }) {
    const { query } = props.where;
    const who = query["who"] ?? "";
    const noun = query["noun"] ?? "";
    const { answer, trouble } = useAnswer("audit/list", {
        limit: kMostEntries,
        ...(who ? { who } : {}),
        ...(noun ? { noun } : {}),
    });
    const { answer: entry, trouble: entryTrouble } = useAnswer(query["entry"] ? "audit/show" : undefined, {
        ID: query["entry"] ?? "",
    });
    const changesOf = entry?.parts?.["changes"] ?? [];
    return (
        <div class="page">
            <h1>{t("audit.title")}</h1>
            <form class="inline" onSubmit={event => event.preventDefault()}>
                {(["who", "noun"] as const).map(name => (
                    <div class="field" key={name}>
                        <label for={`audit-${name}`}>{t(`audit.${name}`)}</label>
                        <input
                            id={`audit-${name}`}
                            dir="auto"
                            value={query[name] ?? ""}
                            onChange={event => void go("/audit", { ...query, [name]: event.currentTarget.value })}
                        />
                    </div>
                ))}
            </form>
            <Trouble text={trouble || entryTrouble} />
            {entry?.record && (
                <section class="entry" aria-label={t("audit.entry", { id: String(entry.record["id"]) })}>
                    <h2>{t("audit.entry", { id: String(entry.record["id"]) })}</h2>
                    <RecordView record={entry.record} />
                    <Table label={t("audit.values")} columns={["change", "what", "column", "before", "after"]} rows={changesOf} />
                    <div class="buttons">
                        <button onClick={() => void go("/audit", { ...query, entry: undefined })}>{t("close")}</button>
                        {!entry.record["undone_by"] && may("audit/undo") && (
                            <button
                                class="danger"
                                onClick={() => void undo(Number(entry.record?.["id"]))}
                            >
                                {t("audit.undo")}
                            </button>
                        )}
                    </div>
                </section>
            )}
            {answer?.rows && (
                <Table
                    label={t("audit.title")}
                    columns={["id", "time", "who", "front_end", "command", "reason", "rows"]}
                    rows={answer.rows}
                    action={row => (
                        <>
                            <button class="link" onClick={() => void go("/audit", { ...query, entry: String(row["id"]) })}>
                                {t("generic.show")}
                            </button>{" "}
                            {row["undone_by"] ? (
                                <span class="muted">{t("audit.undone", { id: String(row["undone_by"]) })}</span>
                            ) : (
                                may("audit/undo") && (
                                    <button class="link" onClick={() => void undo(Number(row["id"]))}>
                                        {t("undo")}
                                    </button>
                                )
                            )}
                        </>
                    )}
                />
            )}
        </div>
    );
}

