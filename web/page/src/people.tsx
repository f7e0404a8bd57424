// What is done with people who were selected, and with people and groups that are dragged, or cut, to a group.
import { useState } from "preact/hooks";
import { type Answer, type Place, type Values, may, run } from "./api";
import { Dialog, Lines, Trouble, askFor, change, changeOrSay, confirmed, openDialog, sentence, toast, useWork } from "./dialogs";
import { departmentOf, fieldLabel } from "./fields";
import type { Selection } from "./selection";
import { counted, t } from "./texts";
import { argumentOf, suggestGroups, suggestPlans, suggestRoles } from "./pickers";

const kMostWithoutPreview = 20;
const kMostAtOnce = 200;
/** What is done with many is a job. */
const wayFor = (people: Selection) => (people.count > kMostAtOnce ? { job: true } : {});

function Preview(props: { title: string; answer: Answer; onEnd: (agreed: boolean) => void }) {
    const lines = (props.answer.outcomes ?? []).map(outcome => outcome.message);
    return (
        <Dialog title={props.title} onClose={() => props.onEnd(false)}>
            <p>{t("preview")}</p>
            <Lines label={t("preview")} lines={lines} />
            <div class="buttons">
                <button onClick={() => props.onEnd(false)}>{t("cancel")}</button>
                <button class="main" onClick={() => props.onEnd(true)}>
                    {t("goon")}
                </button>
            </div>
        </Dialog>
    );
}

/** Runs a command on people; with many, shows first what it would do. @return null: not agreed. */
async function answerFor(command: string, people: Selection, others: Values): Promise<Answer | null> {
    const values = { ...others, USER: people.argument() };
    if (people.count > kMostWithoutPreview) {
        const answer = await run(command, values, { dry_run: true, ...wayFor(people) });
        const isAgreed = await new Promise<boolean>(resolve =>
            openDialog(close => (
                <Preview
                    title={counted("people.count", people.count)}
                    answer={answer}
                    onEnd={agreed => {
                        close();
                        resolve(agreed);
                    }}
                />
            )),
        );
        if (!isAgreed) {
            return null;
        }
    }
    return change(command, values, wayFor(people));
}

/** The same. @return whether it was done. */
export const changePeople = async (command: string, people: Selection, others: Values = {}): Promise<boolean> =>
    (await answerFor(command, people, others)) !== null;

/** The same, where a toast is enough for what goes wrong. */
export const changePeopleOrSay = (command: string, people: Selection, others: Values = {}) =>
    changePeople(command, people, others).catch(error => {
        toast(sentence(error));
        return false;
    });

/** What is deleted is shown in any case. */
export const deletePeople = (people: Selection) => 
    changeOrSay("user/delete", { USER: people.argument() }, false, wayFor(people));

const group = (name: string, label: string, isRequired: boolean, value = "") => ({
    name,
    label,
    value,
    required: isRequired,
    suggest: suggestGroups,
});

/** @param from  the group that they leave where they are in several; empty: not known. */
export const askMove = (people: Selection, from: string) =>
    askFor(
        t("people.moveto", { people: counted("people.count", people.count) }),
        [group("to", t("group.path"), true), group("from", t("people.from"), false, from)],
        t("move"),
        async values =>
            changePeople("user/move", people, {
                TO: values["to"] ?? "",
                ...(values["from"] ? { from: values["from"] } : {}),
            }),
    );
export const askAdd = (people: Selection) =>
    askFor(t("people.addto"), [group("group", t("group.path"), true)], t("ok"), async values =>
        changePeople("member/add", people, { GROUP: values["group"] ?? "" }),
    );
export const askRole = (people: Selection, verb: "add" | "remove") =>
    askFor(
        t(`people.role.${verb}`),
        [{ name: "role", label: t("role"), required: true, suggest: suggestRoles }],
        t("ok"),
        async values => changePeople(`role/${verb}`, people, { ROLE: values["role"] ?? "" }),
    );

/** Assigns a backup plan, or takes it away; the server shows to whom. */
export const askPlan = (people: Selection, verb: "assign" | "unassign") =>
    askFor(
        t(`people.plan.${verb}`),
        [{ name: "plan", label: t("plan"), required: true, suggest: suggestPlans }],
        t("ok"),
        async values =>
            (await change(`plan/${verb}`, { PLAN: values["plan"] ?? "", ITEM: people.argument("user:") }, wayFor(people))) !==
            null,
    );

/** Makes a user. @param department  a path that is proposed. */
export const askUser = (department: string, onMade: (id: number) => void) =>
    askFor(
        t("user.new"),
        [
            { name: "login", label: t("column.login"), required: true },
            { name: "name", label: t("column.name") },
            { name: "title", label: t("column.title") },
            { name: "email", label: t("column.email") },
            group("department", t("group.path"), false, department),
        ],
        t("create"),
        async values => {
            const given = Object.entries(values).filter(([name, value]) => name !== "login" && value !== "");
            const made = await change("user/create", { LOGIN: values["login"] ?? "", ...Object.fromEntries(given) });
            if (typeof made?.value === "number") {
                onMade(made.value);
            }
            return made !== null;
        },
    );

// ---- Fields and passwords -------------------------------------------------------------------------------------------

/** What several people may have in common. */
const fields = [
    "title",
    "department",
    "company",
    "office_phone",
    "office_fax",
    "office_address",
    "office_postcode",
    "home_province",
    "home_city",
    "note",
    "description",
];

function FieldsDialog(props: { people: Selection; onClose: () => void }) {
    const [values, setValues] = useState<Record<string, string>>({});
    const { trouble, begin } = useWork(async () => {
        if (await changePeople("user/set", props.people, departmentOf(values))) {
            props.onClose();
        }
    });
    const touched = Object.keys(values).length;
    const without = (name: string) => (before: Record<string, string>) =>
        Object.fromEntries(Object.entries(before).filter(([other]) => other !== name));
    return (
        <Dialog title={t("people.fields", { people: counted("people.count", props.people.count) })} onClose={props.onClose}>
            <p class="help">{t("people.fields.help")}</p>
            <form onSubmit={begin}>
                <Trouble text={trouble} />
                {fields.map(name => (
                    <div key={name} class={`field chosen-field${name in values ? " changed" : ""}`}>
                        <input
                            type="checkbox"
                            aria-label={t("people.fields.set", { name: fieldLabel(name) })}
                            checked={name in values}
                            onChange={event =>
                                setValues(event.currentTarget.checked ? before => ({ ...before, [name]: "" }) : without(name))
                            }
                        />
                        <label for={`set-${name}`}>{fieldLabel(name)}</label>
                        <input
                            id={`set-${name}`}
                            dir="auto"
                            value={values[name] ?? ""}
                            onInput={event => {
                                const text = event.currentTarget.value;
                                setValues(before => ({ ...before, [name]: text }));
                            }}
                        />
                    </div>
                ))}
                {"department" in values && <p class="help">{t("department.hint")}</p>}
                <div class="buttons">
                    <button type="button" onClick={props.onClose}>
                        {t("cancel")}
                    </button>
                    <button class="main" disabled={touched === 0}>
                        {t("save")}
                    </button>
                </div>
            </form>
        </Dialog>
    );
}

export const askFields = (people: Selection) =>
    openDialog(close => <FieldsDialog people={people} onClose={close} />);

const quoted = (text: string) => (/[",\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text);

function Passwords(props: { made: { login: string; password: string }[]; onClose: () => void }) {
    const { made } = props;
    const [isKept, setKept] = useState(false);
    const save = () => {
        const lines = ["login,password", ...made.map(one => `${quoted(one.login)},${quoted(one.password)}`)];
        const link = document.createElement("a");
        link.href = URL.createObjectURL(new Blob([`${lines.join("\n")}\n`], { type: "text/csv" }));
        link.download = "passwords.csv";
        link.click();
        URL.revokeObjectURL(link.href);
        setKept(true);
    };
    const close = async () => {
        if (isKept || (await confirmed(t("passwords.lose"), t("passwords.drop")))) {
            props.onClose();
        }
    };
    return (
        <Dialog title={t("passwords.made", { count: made.length })} onClose={() => void close()}>
            <Lines label={t("passwords.made", { count: made.length })} lines={made.map(one => `${one.login}: ${one.password}`)} />
            <div class="buttons">
                <button class="main" onClick={save}>
                    {t("passwords.save")}
                </button>
                <button onClick={() => void close()}>{t("close")}</button>
            </div>
        </Dialog>
    );
}

export const openPasswords = (made: { login: string; password: string }[]) =>
    openDialog(close => <Passwords made={made} onClose={close} />);

/** Gives everybody a password that is made up; they are shown this once. */
export async function askPasswords(people: Selection): Promise<void> {
    if (!(await confirmed(t("passwords.ask", { people: counted("people.count", people.count) }), t("passwords.go")))) {
        return;
    }
    try {
        const answer = await answerFor("user/password/set", people, { generate: true });
        // That of a single user comes by itself, and the outcome says whose it is.
        const own = answer?.password ? [{ login: answer.outcomes?.[0]?.name ?? "", password: answer.password }] : [];
        const made = answer?.passwords ?? own;
        if (made.length > 0) {
            openPasswords(made);
        }
    } catch (error) {
        toast(sentence(error));
    }
}

// ---- Dragged, or cut ------------------------------------------------------------------------------------------------

/** @param from  the place whose own members the people are shown as, or under which the group is; empty: none. */
type Carried = { people: Selection; from: string } | { group: Place; from: string };

let carried: Carried | undefined;

export const carry = (what: Carried | undefined) => {
    carried = what;
};
export const sayCut = (what: string) => toast(t("cut", { what }));
export const cut = (people: Selection, from: string) => {
    carry({ people, from });
    sayCut(counted("people.count", people.count));
};
/** Whether what is carried can be put into a place. */
export const canDrop = (place: Place | undefined) =>
    carried !== undefined &&
    place !== undefined &&
    place.key !== "nowhere" &&
    ("group" in carried
        ? may("group/move") && carried.group.key !== place.key
        : may("user/move") && place.key.startsWith("group:"));

/** Asks, and puts what is carried into a place. @param isCopy  people stay where they are, too. */
export function drop(place: Place, isCopy: boolean): void {
    if (!carried || !canDrop(place)) {
        return;
    }
    const what = carried;
    const to = place.name;
    const from: Values = /^(view|group):/.test(what.from) ? { from: argumentOf(what.from) } : {};
    if ("group" in what) {
        askFor(t("drop.group", { name: what.group.name, to }), [], t("move"), async () => {
            const isElsewhere = what.group.places > 1;
            const values = { GROUP: argumentOf(what.group.key), PARENT: argumentOf(place.key) };
            return (await change("group/move", isElsewhere ? { ...values, ...from } : values)) !== null;
        });
        return;
    }
    const people = counted("people.count", what.people.count);
    if (isCopy) {
        askFor(t("drop.add", { people, to }), [], t("add"), async () =>
            changePeople("member/add", what.people, { GROUP: argumentOf(place.key) }),
        );
    } else {
        askFor(t("drop.move", { people, to }), [], t("move"), async () =>
            changePeople("user/move", what.people, { TO: argumentOf(place.key), ...from }),
        );
    }
}

