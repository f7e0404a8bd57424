// One user.
import { useEffect, useRef, useState } from "preact/hooks";
import { useAnswer } from "./answers";
import { Problem, type Row, type Value, may, run } from "./api";
import { directedKey } from "./branches";
import { askFor, change, changeOrSay, confirmed, Dialog, openDialog, sentence, Trouble, undo } from "./dialogs";
import { departmentOf, fieldLabel } from "./fields";
import { Icon } from "./icons";
import { addGuard, useChanges } from "./place";
import { RecordView, Table } from "./table";
import { counted, t } from "./texts";
import { suggestGroups, suggestRoles } from "./pickers";

const tabs = ["general", "contact", "groups", "roles", "rights", "security", "more", "history"] as const;
export type Tab = (typeof tabs)[number];

/** Fields that are changed here, by tab; a flag's value is true or false. */
const fields: Record<string, string[]> = {
    general: ["name", "title", "department", "company", "sex", "birthday", "note", "description", "locked", "super"],
    contact: [
        "email",
        "mobile",
        "office_phone",
        "office_fax",
        "office_address",
        "office_postcode",
        "home_phone",
        "home_fax",
        "home_province",
        "home_city",
        "home_address",
        "home_postcode",
    ],
};
const editable = Object.values(fields).flat();
const lists: Partial<Record<Tab, { command: string; columns: string[] }>> = {
    groups: { command: "user/groups", columns: [] },
    roles: { command: "user/roles", columns: [] },
    rights: { command: "right/effective", columns: [] },
    history: { command: "user/history", columns: ["time", "who", "change", "what", "column", "before", "after"] },
};

const asText = (value: Value | undefined) => (value === null || value === undefined ? "" : String(value));

function Field(props: { name: string; value: Value; isChanged: boolean; theirs: string | undefined; onInput: (value: Value) => void; onTake: () => void }) {
    const { name, value } = props;
    const id = `field-${name}`;
    const isLong = name === "note" || name === "description";
    return (
        <div class={`field row-field${props.isChanged ? " changed" : ""}`}>
            <label for={id}>{fieldLabel(name)}</label>
            <div>
                {typeof value === "boolean" ? (
                    <input id={id} type="checkbox" checked={value} onChange={event => props.onInput(event.currentTarget.checked)} />
                ) : name === "sex" ? (
                    <select id={id} value={asText(value)} onChange={event => props.onInput(event.currentTarget.value)}>
                        {(["unknown", "male", "female"] as const).map(word => (
                            <option key={word} value={word}>
                                {t(`sex.${word}`)}
                            </option>
                        ))}
                    </select>
                ) : isLong ? (
                    <textarea id={id} dir="auto" rows={3} value={asText(value)} onInput={event => props.onInput(event.currentTarget.value)} />
                ) : (
                    <input
                        id={id}
                        dir="auto"
                        type={name === "birthday" ? "date" : "text"}
                        value={asText(value)}
                        onInput={event => props.onInput(event.currentTarget.value)}
                    />
                )}
                {name === "department" && props.isChanged && <p class="help">{t("department.hint")}</p>}
                {props.theirs !== undefined && (
                    <p class="theirs">
                        <bdi>{t("conflict.theirs", { value: props.theirs })}</bdi>{" "}
                        <button type="button" class="link" onClick={props.onTake}>
                            {t("conflict.take")}
                        </button>
                    </p>
                )}
            </div>
        </div>
    );
}

interface Action {
    label: string;
    begin: () => unknown;
}

const RowAction = (props: Action) => (
    <button class="link" onClick={props.begin}>
        {props.label}
    </button>
);

/** What is done with a row of a tab, if anything may be. */
function actionOf(tab: Tab, user: string[]): ((row: Row) => Action) | undefined {
    const id = (row: Row) => `${row["type"] === "view" ? "view" : "id"}:${row["id"]}`;
    if (tab === "groups" && may("member/remove")) {
        return row => ({ label: t("remove"), begin: () => changeOrSay("member/remove", { GROUP: id(row), USER: user }) });
    }
    if (tab === "roles" && may("role/remove")) {
        return row => ({ label: t("remove"), begin: () => changeOrSay("role/remove", { ROLE: `id:${row["id"]}`, USER: user }) });
    }
    if (tab === "history" && may("audit/undo")) {
        return row => ({ label: t("undo"), begin: () => undo(Number(row["entry"])) });
    }
    return undefined;
}

function ListTab(props: { tab: Tab; id: number }) {
    const spec = lists[props.tab] as { command: string; columns: string[] };
    const { answer, trouble } = useAnswer(spec.command, { USER: `id:${props.id}` });
    const user = [`id:${props.id}`];
    const action = actionOf(props.tab, user);
    return (
        <>
            <Trouble text={trouble} />
            {props.tab === "groups" && may("member/add") && (
                <div class="bar">
                    <button
                        onClick={() =>
                            askFor(
                                t("people.addto"),
                                [{ name: "group", label: t("group.path"), required: true, suggest: suggestGroups }],
                                t("ok"),
                                async values => (await change("member/add", { GROUP: values["group"] ?? "", USER: user })) !== null,
                            )
                        }
                    >
                        {t("people.addto")}
                    </button>
                </div>
            )}
            {props.tab === "roles" && may("role/add") && (
                <div class="bar">
                    <button
                        onClick={() =>
                            askFor(
                                t("people.role.add"),
                                [{ name: "role", label: t("role"), required: true, suggest: suggestRoles }],
                                t("add"),
                                async values => (await change("role/add", { ROLE: values["role"] ?? "", USER: user })) !== null,
                            )
                        }
                    >
                        {t("people.role.add")}
                    </button>
                </div>
            )}
            {answer?.rows && (
                <Table
                    label={t(`tab.${props.tab}`)}
                    columns={spec.columns.length > 0 ? spec.columns : (answer.columns ?? [])}
                    rows={answer.rows}
                    {...(action ? { action: row => <RowAction {...action(row)} /> } : {})}
                />
            )}
        </>
    );
}

function Security(props: { id: number; record: Row }) {
    const user = `id:${props.id}`;
    // The help desk gives no passwords to super users.
    const isOffered = may("user/password/set") && (may("user/set") || !props.record["super"]);
    const generate = async () => {
        const answer = await changeOrSay("user/password/set", { USER: user, generate: true });
        const made = answer?.password;
        if (made) {
            openDialog(close => (
                <Dialog title={t("password.made")} onClose={close}>
                    <p class="secret">{made}</p>
                    <div class="buttons">
                        <button class="main" onClick={close}>
                            {t("close")}
                        </button>
                    </div>
                </Dialog>
            ));
        }
    };
    return (
        <>
            <p>
                {props.record["password_set"]
                    ? t("password.state.set", { type: asText(props.record["password_type"]) })
                    : t("password.state.none")}
            </p>
            {isOffered && <div class="bar">
                <button
                    onClick={() =>
                        askFor(
                            t("password.set"),
                            [{ name: "password", label: t("signin.password"), type: "password", required: true, help: t("password.rules") }],
                            t("save"),
                            async values =>
                                (await change("user/password/set", { USER: user, password: values["password"] ?? "" })) !== null,
                        )
                    }
                >
                    {t("password.new")}
                </button>
                <button onClick={() => void generate()}>{t("password.generate")}</button>
            </div>}
        </>
    );
}

export function Sheet(props: { id: number; tab: Tab; onTab: (tab: Tab) => void; onClose: () => void }) {
    const changes = useChanges();
    const [record, setRecord] = useState<Row>();
    const [version, setVersion] = useState("");
    const [mine, setMine] = useState<Row>({});
    const [theirs, setTheirs] = useState<Record<string, string>>({});
    const [trouble, setTrouble] = useState("");
    const [isConflict, setConflict] = useState(false);
    const count = Object.keys(mine).length;

    const load = async (isKept: boolean) => {
        try {
            const answer = await run("user/show", { USER: `id:${props.id}` });
            if (!isKept) {
                setMine({});
                setTheirs({});
                setConflict(false);
            }
            setRecord(answer.record);
            setVersion(answer.version ?? "");
            setTrouble("");
        } catch (error) {
            setTrouble(sentence(error));
        }
    };
    useEffect(() => {
        setRecord(undefined);
        void load(false);
    }, [props.id]);
    // A change made elsewhere on this page; what is being entered here stays, and is compared when it is saved.
    useEffect(() => {
        if (changes > 0 && count === 0) {
            void load(true);
        }
    }, [changes]);
    useEffect(() => {
        if (count === 0) {
            return;
        }
        return addGuard(async () => {
            const isGood = await confirmed(t("leave"), t("drop"));
            if (isGood) {
                setMine({});
            }
            return isGood;
        });
    }, [count]);

    const input = (name: string, value: Value) =>
        setMine(before => {
            const after = { ...before };
            if (asText(value) === asText(record?.[name]) && typeof value !== "boolean") {
                delete after[name];
            } else if (typeof value === "boolean" && value === record?.[name]) {
                delete after[name];
            } else {
                after[name] = value;
            }
            return after;
        });
    const isSaving = useRef(false);
    const save = async () => {
        if (!record || count === 0 || isSaving.current) {
            return;
        }
        isSaving.current = true;
        const parameters = { USER: `id:${props.id}`, ...departmentOf(mine) };
        try {
            await change("user/set", parameters, {
                if_unchanged: { command: "user/show", parameters: { USER: `id:${props.id}` }, version },
            });
            await load(false);
        } catch (error) {
            if (error instanceof Problem && error.code === "changed_meanwhile" && error.current) {
                const current = error.current;
                const both = Object.keys(mine).filter(name => asText(current[name]) !== asText(record[name]));
                setTheirs(Object.fromEntries(both.map(name => [name, asText(current[name])])));
                setRecord(current);
                setVersion(error.version ?? "");
                setConflict(true);
                setTrouble("");
            } else {
                setTrouble(sentence(error));
            }
        }
        isSaving.current = false;
    };

    const name = asText(record?.["name"]) || asText(record?.["login"]);
    return (
        <aside
            class="sheet panel"
            aria-label={t("user.sheet")}
            onKeyDown={event => {
                if (event.key === "s" && event.ctrlKey) {
                    event.preventDefault();
                    void save();
                } else if (event.key === "Escape" && !event.defaultPrevented) {
                    props.onClose();
                }
            }}
        >
            <header>
                <div>
                    <h2 dir="auto">{name}</h2>
                    <p class="muted">
                        <bdi>{asText(record?.["login"])}</bdi> · id {props.id}
                    </p>
                </div>
                <button class="icon" aria-label={t("close")} onClick={props.onClose}>
                    <Icon name="close" />
                </button>
            </header>
            <div class="tabs" role="tablist" aria-label={t("user.sheet")}>
                {tabs.map((tab, i) => (
                    <button
                        key={tab}
                        id={`tab-${tab}`}
                        role="tab"
                        aria-selected={tab === props.tab}
                        aria-controls="tabpanel"
                        tabIndex={tab === props.tab ? 0 : -1}
                        onClick={() => props.onTab(tab)}
                        onKeyDown={event => {
                            const key = directedKey(event.key);
                            const step = key === "ArrowRight" ? 1 : key === "ArrowLeft" ? -1 : 0;
                            const other = tabs[(i + step + tabs.length) % tabs.length];
                            if (step !== 0 && other) {
                                props.onTab(other);
                                document.getElementById(`tab-${other}`)?.focus();
                            }
                        }}
                    >
                        {t(`tab.${tab}`)}
                    </button>
                ))}
            </div>
            <div class="body" id="tabpanel" role="tabpanel" aria-labelledby={`tab-${props.tab}`} tabIndex={0}>
                <Trouble text={trouble} />
                {isConflict && (
                    <p class="warning" role="alert">
                        {t("conflict")}
                    </p>
                )}
                <fieldset class="plain" disabled={!may("user/set")}>
                {record &&
                    fields[props.tab]?.map(field => (
                        <Field
                            key={field}
                            name={field}
                            value={mine[field] ?? record[field] ?? ""}
                            isChanged={field in mine}
                            theirs={theirs[field]}
                            onInput={value => input(field, value)}
                            onTake={() => {
                                input(field, record[field] ?? "");
                                setTheirs(({ [field]: _, ...others }) => others);
                            }}
                        />
                    ))}
                </fieldset>
                {record && props.tab === "more" && (
                    <RecordView
                        record={Object.fromEntries(
                            Object.entries(record).filter(([field]) => !editable.includes(field) && !field.startsWith("password")),
                        )}
                    />
                )}
                {record && props.tab === "security" && <Security id={props.id} record={record} />}
                {lists[props.tab] && <ListTab key={props.tab} tab={props.tab} id={props.id} />}
            </div>
            {fields[props.tab] && may("user/set") && (
                <footer>
                    <span role="status">{count > 0 ? counted("changed.count", count) : ""}</span>
                    <button disabled={count === 0} onClick={() => void load(false)}>
                        {t("discard")}
                    </button>
                    <button class="main" disabled={count === 0} onClick={() => void save()}>
                        {t("save")}
                    </button>
                </footer>
            )}
        </aside>
    );
}
